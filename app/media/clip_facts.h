// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_CLIP_FACTS_H
#define VIREO_APP_MEDIA_CLIP_FACTS_H

#include "app/base/ratio.h"
#include "app/media/input_policy.h"
#include "engine/chain/clip.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vireo {

/// What other programs must be told of a clip. Nothing of it is rendered.
struct ClipFacts {
    int width = 0;  ///< As the picture stands upright.
    int height = 0;
    Ratio pixelAspect{1, 1};
    Ratio frameRate;              ///< Frames a second.
    std::int64_t frameCount = 0;  ///< 0 where unknown.
    double start = 0;             ///< Of the first frame, in seconds behind the begin of the file.
    std::vector<double> seconds;  ///< Of each frame from the first one; empty where they are not known.
    Interlacing interlacing = Interlacing::Progressive;
    bool alpha = false;
    bool isRgb = false;
    bool standardDefinition = false;  ///< Its YUV is BT.601, else BT.709.
};

/// Reads a clip's first frame and the times of all. Throws Error.
ClipFacts readClipFacts(const std::string& input, const InputPolicy& policy);

}  // namespace vireo

#endif
