// SPDX-License-Identifier: MIT
// The part of the OpenFX image effect interface, version 1.4, that the plug-in uses. Names of types and
// members are its own, since both sides have to know them.
#ifndef VIREO_BRIDGES_OPENFX_OFX_H
#define VIREO_BRIDGES_OPENFX_OFX_H

#include <cstddef>

#if defined(_WIN32)
#define VIREO_OFX_EXPORT extern "C" __declspec(dllexport)
#else
#define VIREO_OFX_EXPORT extern "C" __attribute__((visibility("default")))
#endif

extern "C" {

using OfxStatus = int;
using OfxTime = double;

using OfxPropertySetHandle = struct OfxPropertySetStruct*;
using OfxImageEffectHandle = struct OfxImageEffectStruct*;
using OfxImageClipHandle = struct OfxImageClipStruct*;
using OfxImageMemoryHandle = struct OfxImageMemoryStruct*;
using OfxParamHandle = struct OfxParamStruct*;
using OfxParamSetHandle = struct OfxParamSetStruct*;
using OfxMutexHandle = struct OfxMutex*;

struct OfxRangeD {
    double min, max;
};

struct OfxRectI {
    int x1, y1, x2, y2;
};

struct OfxRectD {
    double x1, y1, x2, y2;
};

struct OfxHost {
    OfxPropertySetHandle host;
    const void* (*fetchSuite)(OfxPropertySetHandle host, const char* suiteName, int suiteVersion);
};

using OfxPluginEntryPoint = OfxStatus(const char* action, const void* handle, OfxPropertySetHandle inArgs,
                                      OfxPropertySetHandle outArgs);

struct OfxPlugin {
    const char* pluginApi;
    int apiVersion;
    const char* pluginIdentifier;
    unsigned int pluginVersionMajor;
    unsigned int pluginVersionMinor;
    void (*setHost)(OfxHost* host);
    OfxPluginEntryPoint* mainEntry;
};

struct OfxPropertySuiteV1 {
    OfxStatus (*propSetPointer)(OfxPropertySetHandle, const char* property, int index, void* value);
    OfxStatus (*propSetString)(OfxPropertySetHandle, const char* property, int index, const char* value);
    OfxStatus (*propSetDouble)(OfxPropertySetHandle, const char* property, int index, double value);
    OfxStatus (*propSetInt)(OfxPropertySetHandle, const char* property, int index, int value);
    OfxStatus (*propSetPointerN)(OfxPropertySetHandle, const char* property, int count, void* const* values);
    OfxStatus (*propSetStringN)(OfxPropertySetHandle, const char* property, int count,
                                const char* const* values);
    OfxStatus (*propSetDoubleN)(OfxPropertySetHandle, const char* property, int count, const double* values);
    OfxStatus (*propSetIntN)(OfxPropertySetHandle, const char* property, int count, const int* values);
    OfxStatus (*propGetPointer)(OfxPropertySetHandle, const char* property, int index, void** value);
    OfxStatus (*propGetString)(OfxPropertySetHandle, const char* property, int index, char** value);
    OfxStatus (*propGetDouble)(OfxPropertySetHandle, const char* property, int index, double* value);
    OfxStatus (*propGetInt)(OfxPropertySetHandle, const char* property, int index, int* value);
    OfxStatus (*propGetPointerN)(OfxPropertySetHandle, const char* property, int count, void** values);
    OfxStatus (*propGetStringN)(OfxPropertySetHandle, const char* property, int count, char** values);
    OfxStatus (*propGetDoubleN)(OfxPropertySetHandle, const char* property, int count, double* values);
    OfxStatus (*propGetIntN)(OfxPropertySetHandle, const char* property, int count, int* values);
    OfxStatus (*propReset)(OfxPropertySetHandle, const char* property);
    OfxStatus (*propGetDimension)(OfxPropertySetHandle, const char* property, int* count);
};

struct OfxImageEffectSuiteV1 {
    OfxStatus (*getPropertySet)(OfxImageEffectHandle, OfxPropertySetHandle* properties);
    OfxStatus (*getParamSet)(OfxImageEffectHandle, OfxParamSetHandle* parameters);
    OfxStatus (*clipDefine)(OfxImageEffectHandle, const char* name, OfxPropertySetHandle* properties);
    OfxStatus (*clipGetHandle)(OfxImageEffectHandle, const char* name, OfxImageClipHandle* clip,
                               OfxPropertySetHandle* properties);
    OfxStatus (*clipGetPropertySet)(OfxImageClipHandle, OfxPropertySetHandle* properties);
    OfxStatus (*clipGetImage)(OfxImageClipHandle, OfxTime time, OfxRectD* region,
                              OfxPropertySetHandle* image);
    OfxStatus (*clipReleaseImage)(OfxPropertySetHandle image);
    OfxStatus (*clipGetRegionOfDefinition)(OfxImageClipHandle, OfxTime time, OfxRectD* bounds);
    int (*abort)(OfxImageEffectHandle);
    OfxStatus (*imageMemoryAlloc)(OfxImageEffectHandle, std::size_t bytes, OfxImageMemoryHandle* memory);
    OfxStatus (*imageMemoryFree)(OfxImageMemoryHandle);
    OfxStatus (*imageMemoryLock)(OfxImageMemoryHandle, void** memory);
    OfxStatus (*imageMemoryUnlock)(OfxImageMemoryHandle);
};

struct OfxParameterSuiteV1 {
    OfxStatus (*paramDefine)(OfxParamSetHandle, const char* type, const char* name,
                             OfxPropertySetHandle* properties);
    OfxStatus (*paramGetHandle)(OfxParamSetHandle, const char* name, OfxParamHandle* parameter,
                                OfxPropertySetHandle* properties);
    OfxStatus (*paramSetGetPropertySet)(OfxParamSetHandle, OfxPropertySetHandle* properties);
    OfxStatus (*paramGetPropertySet)(OfxParamHandle, OfxPropertySetHandle* properties);
    OfxStatus (*paramGetValue)(OfxParamHandle, ...);
    OfxStatus (*paramGetValueAtTime)(OfxParamHandle, OfxTime time, ...);
    OfxStatus (*paramGetDerivative)(OfxParamHandle, OfxTime time, ...);
    OfxStatus (*paramGetIntegral)(OfxParamHandle, OfxTime from, OfxTime to, ...);
    OfxStatus (*paramSetValue)(OfxParamHandle, ...);
    OfxStatus (*paramSetValueAtTime)(OfxParamHandle, OfxTime time, ...);
    OfxStatus (*paramGetNumKeys)(OfxParamHandle, unsigned int* count);
    OfxStatus (*paramGetKeyTime)(OfxParamHandle, unsigned int key, OfxTime* time);
    OfxStatus (*paramGetKeyIndex)(OfxParamHandle, OfxTime time, int direction, int* index);
    OfxStatus (*paramDeleteKey)(OfxParamHandle, OfxTime time);
    OfxStatus (*paramDeleteAllKeys)(OfxParamHandle);
    OfxStatus (*paramCopy)(OfxParamHandle to, OfxParamHandle from, OfxTime offset, OfxRangeD* frames);
    OfxStatus (*paramEditBegin)(OfxParamSetHandle, const char* name);
    OfxStatus (*paramEditEnd)(OfxParamSetHandle);
};

/// Version 1 ends behind its first member.
struct OfxMessageSuiteV2 {
    OfxStatus (*message)(void* handle, const char* type, const char* id, const char* format, ...);
    OfxStatus (*setPersistentMessage)(void* handle, const char* type, const char* id, const char* format,
                                      ...);
    OfxStatus (*clearPersistentMessage)(void* handle);
};

using OfxThreadFunctionV1 = void(unsigned int index, unsigned int count, void* argument);

struct OfxMultiThreadSuiteV1 {
    OfxStatus (*multiThread)(OfxThreadFunctionV1* function, unsigned int threads, void* argument);
    OfxStatus (*multiThreadNumCPUs)(unsigned int* count);
    OfxStatus (*multiThreadIndex)(unsigned int* index);
    int (*multiThreadIsSpawnedThread)();
    OfxStatus (*mutexCreate)(OfxMutexHandle* mutex, int lockCount);
    OfxStatus (*mutexDestroy)(OfxMutexHandle);
    OfxStatus (*mutexLock)(OfxMutexHandle);
    OfxStatus (*mutexUnLock)(OfxMutexHandle);
    OfxStatus (*mutexTryLock)(OfxMutexHandle);
};

}  // extern "C"

namespace ofx {

enum Status : int {
    Ok = 0,
    Failed = 1,
    MissingHostFeature = 4,
    OutOfMemory = 8,
    ReplyDefault = 14,
    BadImageFormat = 1000
};

inline constexpr char imageEffectApi[] = "OfxImageEffectPluginAPI";

namespace suite {
inline constexpr char property[] = "OfxPropertySuite";
inline constexpr char imageEffect[] = "OfxImageEffectSuite";
inline constexpr char parameter[] = "OfxParameterSuite";
inline constexpr char message[] = "OfxMessageSuite";
inline constexpr char multiThread[] = "OfxMultiThreadSuite";
}  // namespace suite

namespace action {
inline constexpr char load[] = "OfxActionLoad";
inline constexpr char unload[] = "OfxActionUnload";
inline constexpr char describe[] = "OfxActionDescribe";
inline constexpr char describeInContext[] = "OfxImageEffectActionDescribeInContext";
inline constexpr char createInstance[] = "OfxActionCreateInstance";
inline constexpr char destroyInstance[] = "OfxActionDestroyInstance";
inline constexpr char purgeCaches[] = "OfxActionPurgeCaches";
inline constexpr char getRegionsOfInterest[] = "OfxImageEffectActionGetRegionsOfInterest";
inline constexpr char getFramesNeeded[] = "OfxImageEffectActionGetFramesNeeded";
inline constexpr char getClipPreferences[] = "OfxImageEffectActionGetClipPreferences";
inline constexpr char isIdentity[] = "OfxImageEffectActionIsIdentity";
inline constexpr char render[] = "OfxImageEffectActionRender";
}  // namespace action

namespace context {
inline constexpr char filter[] = "OfxImageEffectContextFilter";
inline constexpr char general[] = "OfxImageEffectContextGeneral";
}  // namespace context

namespace clip {
inline constexpr char source[] = "Source";
inline constexpr char output[] = "Output";
}  // namespace clip

namespace depth {
inline constexpr char byte[] = "OfxBitDepthByte";
inline constexpr char word[] = "OfxBitDepthShort";
inline constexpr char floating[] = "OfxBitDepthFloat";
}  // namespace depth

namespace components {
inline constexpr char rgba[] = "OfxImageComponentRGBA";
inline constexpr char rgb[] = "OfxImageComponentRGB";
}  // namespace components

namespace field {
inline constexpr char both[] = "OfxFieldBoth";
inline constexpr char lower[] = "OfxFieldLower";  ///< Lines 0, 2, 4… counted from below.
inline constexpr char upper[] = "OfxFieldUpper";
}  // namespace field

namespace param {
inline constexpr char integer[] = "OfxParamTypeInteger";
inline constexpr char boolean[] = "OfxParamTypeBoolean";
inline constexpr char choice[] = "OfxParamTypeChoice";
inline constexpr char rgb[] = "OfxParamTypeRGB";
inline constexpr char page[] = "OfxParamTypePage";
}  // namespace param

namespace messages {
inline constexpr char error[] = "OfxMessageError";
inline constexpr char log[] = "OfxMessageLog";
}  // namespace messages

inline constexpr char premultiplied[] = "OfxImageAlphaPremultiplied";
inline constexpr char fullySafe[] = "OfxImageEffectRenderFullySafe";

/// Names of properties.
namespace prop {
inline constexpr char name[] = "OfxPropName";
inline constexpr char label[] = "OfxPropLabel";
inline constexpr char versionLabel[] = "OfxPropVersionLabel";
inline constexpr char pluginDescription[] = "OfxPropPluginDescription";
inline constexpr char time[] = "OfxPropTime";
inline constexpr char instanceData[] = "OfxPropInstanceData";

inline constexpr char grouping[] = "OfxImageEffectPluginPropGrouping";
inline constexpr char supportedContexts[] = "OfxImageEffectPropSupportedContexts";
inline constexpr char supportedPixelDepths[] = "OfxImageEffectPropSupportedPixelDepths";
inline constexpr char supportedComponents[] = "OfxImageEffectPropSupportedComponents";
inline constexpr char singleInstance[] = "OfxImageEffectPluginPropSingleInstance";
inline constexpr char renderThreadSafety[] = "OfxImageEffectPluginRenderThreadSafety";
inline constexpr char hostFrameThreading[] = "OfxImageEffectPluginPropHostFrameThreading";
inline constexpr char fieldRenderTwiceAlways[] = "OfxImageEffectPluginPropFieldRenderTwiceAlways";
inline constexpr char supportsMultiResolution[] = "OfxImageEffectPropSupportsMultiResolution";
inline constexpr char supportsTiles[] = "OfxImageEffectPropSupportsTiles";
inline constexpr char temporalClipAccess[] = "OfxImageEffectPropTemporalClipAccess";
inline constexpr char multipleClipDepths[] = "OfxImageEffectPropMultipleClipDepths";
inline constexpr char multipleClipPars[] = "OfxImageEffectPropSupportsMultipleClipPARs";
inline constexpr char fieldExtraction[] = "OfxImageClipPropFieldExtraction";

inline constexpr char paramHint[] = "OfxParamPropHint";
inline constexpr char paramDefault[] = "OfxParamPropDefault";
inline constexpr char paramMinimum[] = "OfxParamPropMin";
inline constexpr char paramMaximum[] = "OfxParamPropMax";
inline constexpr char paramDisplayMinimum[] = "OfxParamPropDisplayMin";
inline constexpr char paramDisplayMaximum[] = "OfxParamPropDisplayMax";
inline constexpr char paramAnimates[] = "OfxParamPropAnimates";
inline constexpr char paramChoiceOption[] = "OfxParamPropChoiceOption";
inline constexpr char paramPageChild[] = "OfxParamPropPageChild";
inline constexpr char animatesBooleans[] = "OfxParamHostPropSupportsBooleanAnimation";
inline constexpr char animatesChoices[] = "OfxParamHostPropSupportsChoiceAnimation";

inline constexpr char pixelDepth[] = "OfxImageEffectPropPixelDepth";
inline constexpr char imageComponents[] = "OfxImageEffectPropComponents";
inline constexpr char preMultiplication[] = "OfxImageEffectPropPreMultiplication";
inline constexpr char imageData[] = "OfxImagePropData";
inline constexpr char imageBounds[] = "OfxImagePropBounds";
inline constexpr char imageRegion[] = "OfxImagePropRegionOfDefinition";
inline constexpr char imageRowBytes[] = "OfxImagePropRowBytes";
inline constexpr char imageField[] = "OfxImagePropField";
inline constexpr char fieldOrder[] = "OfxImageClipPropFieldOrder";
inline constexpr char frameRange[] = "OfxImageEffectPropFrameRange";
inline constexpr char frameRate[] = "OfxImageEffectPropFrameRate";
inline constexpr char frameVarying[] = "OfxImageEffectFrameVarying";

inline constexpr char fieldToRender[] = "OfxImageEffectPropFieldToRender";
inline constexpr char renderWindow[] = "OfxImageEffectPropRenderWindow";
inline constexpr char renderScale[] = "OfxImageEffectPropRenderScale";

/// Of the clip of the source, as actions answer with it.
inline constexpr char sourceRegionOfInterest[] = "OfxImageClipPropRoI_Source";
inline constexpr char sourceFrameRange[] = "OfxImageClipPropFrameRange_Source";
}  // namespace prop

}  // namespace ofx

#endif
