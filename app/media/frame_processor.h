// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_FRAME_PROCESSOR_H
#define VIREO_APP_MEDIA_FRAME_PROCESSOR_H

#include "engine/chain/clip.h"

#include <cstdint>
#include <string>

namespace vireo {

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

    /// A clip begins: what was kept of the one before is none of its. `threads` may work on one frame.
    virtual void begin(int /*threads*/) {}

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

    /// Renders one frame. The result has the source's format, and may lie in its memory where nobody else
    /// holds it. Throws std::exception on failure.
    virtual PicturePtr process(PicturePtr source, const FramePosition& position,
                               const SourceHistory& history) = 0;
};

}  // namespace vireo

#endif
