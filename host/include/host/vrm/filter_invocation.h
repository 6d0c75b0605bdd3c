// SPDX-License-Identifier: MIT
// The call contract between a host and the filters: records, tables and codes. Readable from C.
#ifndef VIREO_HOST_VRM_FILTER_INVOCATION_H
#define VIREO_HOST_VRM_FILTER_INVOCATION_H

#include "host/pixkit/frame_buffer.h"

enum FilterSelector {
    FilterSelectorExecute = 0,       ///< Render one frame. Result 0.
    FilterSelectorSetup = 1,         ///< Run the settings dialog. Result: its own, or -1 without a template.
    FilterSelectorInitSettings = 5,  ///< Make sure that the settings exist. Result 1.
    FilterSelectorGetPixelFormat = 6,  ///< Name the format of an index. Result 0, or 1 past the last.
    FilterSelectorGetFilterFlags = 8   ///< Result 3.
};

enum FieldFlags {
    FieldFlagUpper = 0x0100,
    FieldFlagLower = 0x0200,
    FieldFlagHalfWidth = 0x0400,
    FieldFlagHalfHeight = 0x0800
};

/// A memory handle of the host: a pointer to the pointer to the bytes.
typedef void** MemoryHandle;

typedef MemoryHandle NewHandleFunction(size_t size);
typedef void DisposeHandleFunction(MemoryHandle handle);
typedef void* GetMainWindowFunction(void);
typedef FrameBuffer* NewVPixFunction(const FrameRect* bounds);
typedef void DisposeVPixFunction(FrameBuffer* handle);
typedef uint32_t GetPixelFormatFunction(FrameBuffer* handle);

/// Renders the source clip at another time into `target`. Past the end it gives the last frame. Result 0.
typedef int32_t GetFrameFunction(uint32_t time, FrameBuffer* target, const FrameRect* bounds, void* data);

/// Maps red, green and blue of every 4-byte pixel (blue, green, red, alpha) through 256-byte tables and
/// copies alpha. `rowBytes` counts for both buffers.
typedef void ApplyChannelTablesFunction(const void* source, void* destination, int32_t rowBytes,
                                        int32_t width, int32_t height, const uint8_t* red,
                                        const uint8_t* green, const uint8_t* blue);

/// Convolves each byte of every 4-byte pixel with a 3 x 3 kernel. `record` holds M11..M33 by rows, the
/// offset and the scale. `rowBytes` counts for both buffers.
typedef void Convolve3x3Function(const void* source, void* destination, const int16_t record[11],
                                 int32_t rowBytes, int32_t width, int32_t height);

#pragma pack(push, 1)

typedef struct MemoryFunctions {
    uint8_t hostData0[32];
    VIREO_POINTER(NewHandleFunction) newHandle;
    uint8_t hostData40[16];
    VIREO_POINTER(DisposeHandleFunction) disposeHandle;
    uint8_t hostData64[8];
    VIREO_POINTER(NewHandleFunction) newContextHandle;
} MemoryFunctions;

typedef struct WindowFunctions {
    uint8_t hostData0[8];
    VIREO_POINTER(GetMainWindowFunction) getMainWindow;
} WindowFunctions;

typedef struct VPixFunctions {
    uint8_t hostData0[24];
    VIREO_POINTER(NewVPixFunction) newVPix;  ///< Null when there is no memory.
    VIREO_POINTER(DisposeVPixFunction) disposeVPix;
} VPixFunctions;

typedef struct PixelFormatFunctions {
    uint8_t hostData0[56];
    VIREO_POINTER(GetPixelFormatFunction) getPixelFormat;
} PixelFormatFunctions;

typedef struct HostCallbacks {
    uint8_t hostData0[4];
    VIREO_POINTER(const MemoryFunctions) memory;
    VIREO_POINTER(const WindowFunctions) window;
    VIREO_POINTER(const VPixFunctions) vpix;
    VIREO_POINTER(const PixelFormatFunctions) pixelFormat;
} HostCallbacks;

/// The utility services reached through FilterInvocation::hostInstanceData.
typedef struct UtilityServices {
    uint8_t hostData0[126];
    VIREO_POINTER(ApplyChannelTablesFunction) applyChannelTables;
    VIREO_POINTER(Convolve3x3Function) convolve3x3;
} UtilityServices;

typedef struct TimeBase {
    uint8_t hostData0[8];
    uint32_t fieldDuration;  ///< Of one field, in units of frameTime.
} TimeBase;

typedef struct FilterInvocation {
    VIREO_POINTER(void*) settingsHandle;  ///< Null until a filter creates it.
    VIREO_POINTER(FrameBuffer) sourceFrame;
    VIREO_POINTER(FrameBuffer) destFrame;
    uint32_t frameTime;
    uint32_t clipDuration;  ///< In units of frameTime.
    uint8_t hostData32[1];
    VIREO_POINTER(void) frameCallbackData;
    VIREO_POINTER(GetFrameFunction) getFrameCallback;  ///< May be null.
    VIREO_POINTER(const UtilityServices) hostInstanceData;
    uint8_t hostData57[2];
    uint16_t fieldFlags;
    uint8_t hostData61[4];
    VIREO_POINTER(const TimeBase) timeBase;
    uint8_t hostData73[8];
    VIREO_POINTER(const HostCallbacks) hostCallbacks;
    uint8_t hostData89[36];
    uint32_t pixelFormat;  ///< The format's four characters as a little-endian word.
    uint32_t pixelFormatIndex;
} FilterInvocation;

/// A filter's entry function. No filter reads the first argument.
typedef int32_t FilterEntryFunction(void* unused, int16_t selector, FilterInvocation** invocation);
typedef FilterEntryFunction* FilterEntryProc;

enum MetaPluginSelector {
    MetaPluginInitialise = 1,
    MetaPluginTerminate = 2,
    MetaPluginCount = 3,
    MetaPluginEntryInformation = 4,
    MetaPluginPropertyList = 5
};

enum MetaPluginResult {
    MetaPluginDone = 0,
    MetaPluginUnknownSelector = -1,
    MetaPluginNoPropertyList = -2,
    MetaPluginBadArgument = -3
};

typedef struct MetaPluginInitialiseRecord {
    uint16_t hostLanguage;
} MetaPluginInitialiseRecord;

typedef struct MetaPluginCountRecord {
    int32_t count;
} MetaPluginCountRecord;

typedef struct MetaPluginEntryRecord {
    uint32_t index;
    uint32_t kind;
    uint32_t id;
    uint8_t hostData12[4];
    VIREO_POINTER(FilterEntryFunction) entry;
} MetaPluginEntryRecord;

typedef struct MetaPluginPropertyListRecord {
    uint32_t index;
    uint8_t hostData4[4];
    VIREO_POINTER(void) buffer;  ///< Null asks for the size alone.
    int32_t size;                ///< In: what the buffer holds. Out: bytes of the list.
} MetaPluginPropertyListRecord;

#pragma pack(pop)

/// The one function that the module exports, under the name "VRMetaPlugin".
typedef int32_t MetaPluginFunction(int32_t selector, void* record);

#ifdef __cplusplus
static_assert(offsetof(MemoryFunctions, newHandle) == 32);
static_assert(offsetof(MemoryFunctions, disposeHandle) == 56);
static_assert(offsetof(MemoryFunctions, newContextHandle) == 72);
static_assert(offsetof(WindowFunctions, getMainWindow) == 8);
static_assert(offsetof(VPixFunctions, newVPix) == 24);
static_assert(offsetof(VPixFunctions, disposeVPix) == 32);
static_assert(offsetof(PixelFormatFunctions, getPixelFormat) == 56);
static_assert(offsetof(HostCallbacks, memory) == 4);
static_assert(offsetof(HostCallbacks, window) == 12);
static_assert(offsetof(HostCallbacks, vpix) == 20);
static_assert(offsetof(HostCallbacks, pixelFormat) == 28);
static_assert(offsetof(UtilityServices, applyChannelTables) == 126);
static_assert(offsetof(UtilityServices, convolve3x3) == 134);
static_assert(offsetof(TimeBase, fieldDuration) == 8);
static_assert(offsetof(FilterInvocation, settingsHandle) == 0);
static_assert(offsetof(FilterInvocation, sourceFrame) == 8);
static_assert(offsetof(FilterInvocation, destFrame) == 16);
static_assert(offsetof(FilterInvocation, frameTime) == 24);
static_assert(offsetof(FilterInvocation, clipDuration) == 28);
static_assert(offsetof(FilterInvocation, frameCallbackData) == 33);
static_assert(offsetof(FilterInvocation, getFrameCallback) == 41);
static_assert(offsetof(FilterInvocation, hostInstanceData) == 49);
static_assert(offsetof(FilterInvocation, fieldFlags) == 59);
static_assert(offsetof(FilterInvocation, timeBase) == 65);
static_assert(offsetof(FilterInvocation, hostCallbacks) == 81);
static_assert(offsetof(FilterInvocation, pixelFormat) == 125);
static_assert(offsetof(FilterInvocation, pixelFormatIndex) == 129);
static_assert(offsetof(MetaPluginEntryRecord, kind) == 4);
static_assert(offsetof(MetaPluginEntryRecord, id) == 8);
static_assert(offsetof(MetaPluginEntryRecord, entry) == 16);
static_assert(offsetof(MetaPluginPropertyListRecord, buffer) == 8);
static_assert(offsetof(MetaPluginPropertyListRecord, size) == 16);
#endif

#endif
