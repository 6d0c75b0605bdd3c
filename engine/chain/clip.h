// SPDX-License-Identifier: MIT
// Where a frame stands in its clip, and the frames before it.
#ifndef VIREO_ENGINE_CHAIN_CLIP_H
#define VIREO_ENGINE_CHAIN_CLIP_H

#include "engine/chain/picture.h"

#include <cstdint>

namespace vireo {

enum class Interlacing { Progressive, TopFieldFirst, BottomFieldFirst };

/// Where a frame stands in the whole clip, also when only a part of it is rendered.
struct FramePosition {
    std::int64_t number = 0;      ///< From 0.
    std::int64_t clipLength = 0;  ///< Frames of the whole clip; 0 where unknown.
    double seconds = 0;           ///< From the first frame of the clip.
    double frameRate = 25;        ///< Frames per second, for key frames given as times of neighbours.
    Interlacing interlacing = Interlacing::Progressive;
};

/// Earlier frames of the source.
class SourceHistory {
public:
    virtual ~SourceHistory() = default;

    /// The source frame of a number: the nearest earlier one where that one is missing or was damaged, the
    /// first one before the clip's begin. Never null for numbers within FilterChain::lookBack() of the
    /// current frame.
    virtual PicturePtr frame(std::int64_t number) const = 0;

    /// The position of that frame.
    virtual FramePosition position(std::int64_t number) const = 0;
};

}  // namespace vireo

#endif
