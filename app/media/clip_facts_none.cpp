// SPDX-License-Identifier: MIT
// Clips are read with FFmpeg's libraries, which are not here.
#include "app/media/clip_facts.h"

#include "engine/error.h"

namespace vireo {

ClipFacts readClipFacts(const std::string&, const InputPolicy&) {
    throw Error(Fault::Usage,
                "clips cannot be read on this system; --frame-rate and --clip-length tell of them");
}

}  // namespace vireo
