// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_RENDER_FRAME_PROCESSOR_H
#define VIREO_APP_RENDER_FRAME_PROCESSOR_H

#include "app/render/picture.h"

#include <cstdint>
#include <string>

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
    /// first one before the clip's begin. Never null for numbers within FrameProcessor::lookBack() of the
    /// current frame.
    virtual PicturePtr frame(std::int64_t number) const = 0;

    /// The position of that frame.
    virtual FramePosition position(std::int64_t number) const = 0;
};

/// What all frames of a clip have in common. `alpha`: whether it is worth keeping.
struct FrameShape {
    int width = 0;
    int height = 0;
    bool alpha = false;
};

/// What is done to each frame between decoder and encoder. process() may be called on several threads at
/// once, for different frames and in any order, and gives the same bytes as in order on one.
class FrameProcessor {
public:
    virtual ~FrameProcessor() = default;

    /// How many earlier source frames process() may ask for.
    virtual int lookBack() const = 0;

    /// The format that source frames are wanted in: "bgra", or a deeper one for a single filter that takes
    /// it. `sourceDepth` is the source's bits per channel, 32 for float.
    virtual std::uint32_t sourceFormat(int sourceDepth) const = 0;

    /// Why frames of a size and format cannot be rendered: a sentence without full stop; empty where they
    /// can.
    virtual std::string refusal(int /*width*/, int /*height*/, std::uint32_t /*format*/, Interlacing) const {
        return {};
    }

    /// The shape of the frames that process() makes of the source's.
    virtual FrameShape outputShape(const FrameShape& source) const { return source; }

    /// Renders one frame. The result has the source's format. Throws std::exception on failure.
    virtual PicturePtr process(const PicturePtr& source, const FramePosition& position,
                               const SourceHistory& history) = 0;
};

}  // namespace vireo

#endif
