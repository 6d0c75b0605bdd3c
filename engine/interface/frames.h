// SPDX-License-Identifier: MIT
// Frames of the caller's, and what the engine makes of them.
#ifndef VIREO_ENGINE_INTERFACE_FRAMES_H
#define VIREO_ENGINE_INTERFACE_FRAMES_H

#include "engine/chain/filter_chain.h"
#include "engine/include/vireo/vireo.h"
#include "engine/pixels/pixel_layout.h"

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <vector>

namespace vireo {

/// A frame of the caller's whose geometry was looked at.
class FrameView {
public:
    /// Throws Error where a size, a layout or, with `hasPixels`, the rows make no sense. `isReduced`: filters
    /// are given 8 bits of it.
    FrameView(const VireoFrame& frame, bool hasPixels, bool isReduced = false);

    int width() const { return frame_.width; }
    int height() const { return frame_.height; }
    std::int64_t stride() const { return frame_.stride; }
    VireoDepth depth() const { return frame_.depth; }
    bool isReduced() const { return isReduced_; }

    /// Whether filters can be given the pixels as they lie: BGRA, straight alpha, whole pixels apart.
    bool isPlainBgra() const;

    /// Whether there are bytes between the rows.
    bool hasGaps() const { return std::abs(frame_.stride) != rowBytes(); }

    /// The pixels as a picture, without a copy.
    std::shared_ptr<Picture> picture() const;

    /// Converts to and from a picture of the same size and, unless it is reduced, depth.
    void copyTo(Picture& picture) const;
    void copyFrom(const Picture& picture) const;

    /// The picture that somebody writes into a frame of this shape.
    PicturePtr fetched(const std::function<void(const VireoFrame&)>& write) const;

    /// Whether two frames share memory.
    bool overlaps(const FrameView& other) const;

    /// Whether two frames of one size are the same pixels.
    bool isAt(const FrameView& other) const {
        return frame_.pixels == other.frame_.pixels && frame_.stride == other.frame_.stride &&
               format() == other.format();
    }

    /// The format in which filters take it.
    std::uint32_t filterFormat() const;

private:
    std::uint8_t* row(int y) const { return static_cast<std::uint8_t*>(frame_.pixels) + y * frame_.stride; }
    PixelFormat format() const;

    /// Room for a row of BGRA in this depth.
    std::vector<std::uint8_t> deepRow() const;
    std::int64_t rowBytes() const { return std::int64_t{frame_.width} * pixelBytes(); }
    int pixelBytes() const { return bytesOf(format().layout, format().depth); }

    VireoFrame frame_;
    bool isReduced_;
};

/// The caller's result, with pixels of the engine's where it brought none. They go again unless they are
/// handed over.
class ResultFrame {
public:
    /// Throws Error where it is not of the source's size and depth.
    ResultFrame(VireoFrame* given, const FrameView& source);

    const FrameView& view() const { return view_; }
    void handOver();

private:
    struct Free {
        void operator()(void* memory) const { vireoFree(memory); }
    };

    VireoFrame* given_;
    std::unique_ptr<void, Free> pixels_;
    VireoFrame filled_;
    FrameView view_;

    static VireoFrame fill(const VireoFrame* given, const FrameView& source,
                           std::unique_ptr<void, Free>& pixels);
};

}  // namespace vireo

#endif
