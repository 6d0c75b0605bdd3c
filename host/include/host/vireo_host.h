// SPDX-License-Identifier: MIT
// The C interface of the reference host.
#ifndef VIREO_HOST_VIREO_HOST_H
#define VIREO_HOST_VIREO_HOST_H

#include "host/host_export.h"
#include "host/pixkit/pixkit.h"
#include "host/vrm/filter_invocation.h"

/// What VRM::GetApplicationType() answers; 5 at start.
VIREO_HOST_C void vireoHostSetApplicationType(int32_t type);

/// What QRB::GetLanguageID() answers, (sub-language << 10) | language; 0x0409 at start. The locale for
/// numbers follows it.
VIREO_HOST_C void vireoHostSetLanguage(uint16_t language);

/// Offers a suite or withdraws it; all are offered at start.
VIREO_HOST_C void vireoHostOfferSuite(const char* name, int32_t offered);

/// Sets a buffer's format, the little-endian word of its four characters. A buffer never named here is
/// "bgra". Kept by address: vpixDispose forgets it, and who frees a buffer of their own sets it back first.
VIREO_HOST_C void vireoHostSetPixelFormat(FrameBuffer* handle, uint32_t code);

/// The host table for FilterInvocation::hostCallbacks. Owned by the host, valid until it is unloaded.
VIREO_HOST_C const HostCallbacks* vireoHostCallbacks(void);

/// The UtilityServices for FilterInvocation::hostInstanceData. Owned by the host, valid until it is unloaded.
VIREO_HOST_C const void* vireoHostServices(void);

#endif
