/* SPDX-License-Identifier: MIT
   The host's headers as a C program sees them: the records have the sizes and offsets that hosts rely on. */
#include "host/vireo_host.h"
#include "host/vrm/suites.h"

#define SIZE(record, bytes) _Static_assert(sizeof(record) == (bytes), #record)
#define OFFSET(record, field, bytes) _Static_assert(offsetof(record, field) == (bytes), #record "." #field)

SIZE(FrameRect, 16);
SIZE(FrameBuffer, 32);
OFFSET(FrameBuffer, rowBytes, 16);
OFFSET(FrameBuffer, pixels, 24);

SIZE(FilterInvocation, 133);
OFFSET(FilterInvocation, destFrame, 16);
OFFSET(FilterInvocation, clipDuration, 28);
OFFSET(FilterInvocation, frameCallbackData, 33);
OFFSET(FilterInvocation, fieldFlags, 59);
OFFSET(FilterInvocation, timeBase, 65);
OFFSET(FilterInvocation, hostCallbacks, 81);
OFFSET(FilterInvocation, pixelFormatIndex, 129);

SIZE(HostCallbacks, 36);
OFFSET(HostCallbacks, memory, 4);
OFFSET(HostCallbacks, pixelFormat, 28);
OFFSET(MemoryFunctions, newHandle, 32);
OFFSET(MemoryFunctions, disposeHandle, 56);
OFFSET(MemoryFunctions, newContextHandle, 72);
OFFSET(VPixFunctions, disposeVPix, 32);
OFFSET(UtilityServices, applyChannelTables, 126);
OFFSET(UtilityServices, convolve3x3, 134);
OFFSET(TimeBase, fieldDuration, 8);
OFFSET(VPixSuite, getPixelFormat, 40);

SIZE(MetaPluginInitialiseRecord, 2);
SIZE(MetaPluginCountRecord, 4);
SIZE(MetaPluginEntryRecord, 24);
OFFSET(MetaPluginEntryRecord, entry, 16);
SIZE(MetaPluginPropertyListRecord, 20);
OFFSET(MetaPluginPropertyListRecord, buffer, 8);
OFFSET(MetaPluginPropertyListRecord, size, 16);
