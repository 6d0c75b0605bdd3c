// SPDX-License-Identifier: MIT
// vireo farm where there is no video.
#include "app/commands/farm_segments.h"

#include "engine/error.h"

namespace vireo {
namespace {

[[noreturn]] void refuse() { throw Error("vireo farm renders video, which it does on Linux alone"); }

}  // namespace

void planFarm(const Catalogue&, const GlobalOptions&, const FarmOptions&) { refuse(); }

void showFarm(const Catalogue&, const GlobalOptions&, const FarmOptions&) { refuse(); }

void joinFarm(const Catalogue&, const GlobalOptions&, const FarmOptions&) { refuse(); }

RenderSummary renderInSegments(const Catalogue&, const GlobalOptions&, FarmOptions, Messages&) {
    throw Error(Fault::Usage, "--resume renders in segments, which is done on Linux alone");
}

}  // namespace vireo
