/* SPDX-License-Identifier: MIT
   The host's headers as a C program sees them, whose records have the sizes that they have in C++. */
#include "host/vireo_host.h"
#include "host/vrm/suites.h"

#define SIZE(record, bytes) _Static_assert(sizeof(record) == (bytes), #record)

SIZE(FrameRect, 16);
SIZE(FrameBuffer, 32);
SIZE(FilterInvocation, 133);
SIZE(HostCallbacks, 36);
SIZE(MetaPluginInitialiseRecord, 2);
SIZE(MetaPluginCountRecord, 4);
SIZE(MetaPluginEntryRecord, 24);
SIZE(MetaPluginPropertyListRecord, 20);
_Static_assert(offsetof(VPixSuite, getPixelFormat) == 40, "VPixSuite");
_Static_assert(offsetof(UtilityServices, convolve3x3) == 134, "UtilityServices");
