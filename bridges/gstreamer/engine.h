// SPDX-License-Identifier: MIT
// The engine that all elements of a process share, and where they log.
#ifndef VIREO_BRIDGES_GSTREAMER_ENGINE_H
#define VIREO_BRIDGES_GSTREAMER_ENGINE_H

#include "vireo/vireo.h"

#include <gst/gst.h>

#include <memory>

GST_DEBUG_CATEGORY_EXTERN(vireo_debug);
#define GST_CAT_DEFAULT vireo_debug

namespace vireo::gstreamer {

struct CloseChain {
    void operator()(VireoChain* chain) const { vireoChainClose(chain); }
};
struct CloseStream {
    void operator()(VireoStream* stream) const { vireoStreamClose(stream); }
};
using ChainPtr = std::unique_ptr<VireoChain, CloseChain>;
using StreamPtr = std::unique_ptr<VireoStream, CloseStream>;

/// Opens the engine once in a process. False where it cannot be; vireoLastError() then says why.
bool openEngine();

/// Null before openEngine().
const VireoEngine* engine();

VireoFilter describeFilter(std::uint32_t filter);
VireoParameter describeParameter(std::uint32_t filter, std::uint32_t parameter);

}  // namespace vireo::gstreamer

#endif
