// SPDX-License-Identifier: MIT
#include "engine/interface/frames.h"

#include "engine/interface/handles.h"
#include "engine/pixels/dither.h"
#include "engine/pixels/reduced_depth.h"

#include <cstdlib>
#include <limits>
#include <new>

namespace vireo {
namespace {

constexpr std::int64_t largestRow = std::numeric_limits<std::int32_t>::max() - 63;

}  // namespace

FrameView::FrameView(const VireoFrame& frame, bool hasPixels, bool isReduced)
    : frame_(frame), isReduced_(isReduced) {
    const std::int32_t layout = numberOf(frame_.layout), depth = numberOf(frame_.depth);
    require(layout >= VireoBgra && layout <= VireoGrey, "a frame's layout is not known");
    require(depth == 0 || depth == VireoDepth8 || depth == VireoDepth16 || depth == VireoDepthFloat,
            "a frame's depth is 8, 16 or 32");
    if (depth == 0) frame_.depth = VireoDepth8;
    require(frame_.width > 0 && frame_.height > 0, "a frame has at least one pixel");
    constexpr std::int64_t widest = largestRow / 16;
    require(frame_.width <= widest, "a frame is too wide");
    if (!hasPixels) return;
    require(frame_.pixels != nullptr, "a frame has no pixels");
    if (frame_.height == 1) frame_.stride = -rowBytes();
    require(frame_.stride >= rowBytes() || frame_.stride <= -rowBytes(),
            "a frame's rows lie closer than they are long");
    require((frame_.stride < 0 ? -(frame_.stride + 1) : frame_.stride) <=
                std::numeric_limits<std::ptrdiff_t>::max() / frame_.height,
            "a frame's rows lie too far apart");
}

PixelFormat FrameView::format() const {
    return {static_cast<PixelLayout>(frame_.layout), static_cast<SampleDepth>(frame_.depth),
            frame_.premultiplied != 0};
}

std::uint32_t FrameView::filterFormat() const {
    if (isReduced_) return PixKit::formatBgra;
    switch (frame_.depth) {
        case VireoDepth16: return PixKit::formatCode("Bgra");
        case VireoDepthFloat: return PixKit::formatCode("BGra");
        default: return PixKit::formatBgra;
    }
}

bool FrameView::isPlainBgra() const {
    const auto address = reinterpret_cast<std::uintptr_t>(frame_.pixels);
    return frame_.layout == VireoBgra && frame_.premultiplied == 0 && !isReduced_ && address % 4 == 0 &&
           frame_.stride % pixelBytes() == 0 && std::abs(frame_.stride) <= largestRow;
}

std::shared_ptr<Picture> FrameView::picture() const {
    const FrameBuffer buffer{{0, 0, frame_.width, frame_.height},
                             static_cast<std::int32_t>(-frame_.stride),
                             0,
                             row(frame_.height - 1)};
    return std::make_shared<Picture>(buffer, filterFormat());
}

std::vector<std::uint8_t> FrameView::deepRow() const {
    return std::vector<std::uint8_t>(static_cast<std::size_t>(bytesOf(PixelLayout::Bgra, format().depth)) *
                                     static_cast<std::size_t>(frame_.width));
}

void FrameView::copyTo(Picture& picture) const {
    if (isReduced_) {
        const DitherRows dither(frame_.width, true);
        auto deep = deepRow();
        for (int y = 0; y < frame_.height; ++y) {
            rowToBgra(format(), row(y), deep.data(), frame_.width);
            rowToBytes(format().depth, deep.data(), dither.row(y), picture.row(y), frame_.width);
        }
        return;
    }
    for (int y = 0; y < frame_.height; ++y) rowToBgra(format(), row(y), picture.row(y), frame_.width);
}

void FrameView::copyFrom(const Picture& picture) const {
    if (isReduced_) {
        auto deep = deepRow();
        for (int y = 0; y < frame_.height; ++y) {
            rowFromBytes(format().depth, picture.row(y), deep.data(), frame_.width);
            rowFromBgra(format(), deep.data(), row(y), frame_.width);
        }
        return;
    }
    for (int y = 0; y < frame_.height; ++y) rowFromBgra(format(), picture.row(y), row(y), frame_.width);
}

PicturePtr FrameView::fetched(const std::function<void(const VireoFrame&)>& write) const {
    auto picture = std::make_shared<Picture>(frame_.width, frame_.height, filterFormat());
    VireoFrame target = frame_;
    target.structSize = sizeof target;
    target.owned = nullptr;
    if (frame_.layout == VireoBgra && frame_.premultiplied == 0 && !isReduced_) {
        target.pixels = picture->row(0);
        target.stride = -std::int64_t{picture->rowBytes()};
        write(target);
        return picture;
    }
    const std::unique_ptr<std::uint8_t[]> pixels(
        new std::uint8_t[Picture::bytesOf(rowBytes(), frame_.height)]);
    target.pixels = pixels.get();
    target.stride = rowBytes();
    write(target);
    FrameView(target, true, isReduced_).copyTo(*picture);
    return picture;
}

bool FrameView::overlaps(const FrameView& other) const {
    const auto begin = [](const FrameView& frame) {
        return reinterpret_cast<std::uintptr_t>(frame.row(frame.stride() < 0 ? frame.height() - 1 : 0));
    };
    const auto end = [](const FrameView& frame) {
        return reinterpret_cast<std::uintptr_t>(frame.row(frame.stride() < 0 ? 0 : frame.height() - 1)) +
               static_cast<std::uintptr_t>(frame.rowBytes());
    };
    return begin(*this) < end(other) && begin(other) < end(*this);
}

VireoFrame ResultFrame::fill(const VireoFrame* given, const FrameView& source,
                             std::unique_ptr<void, Free>& pixels) {
    VireoFrame filled = read(given);
    if (numberOf(filled.depth) == 0) filled.depth = source.depth();
    const FrameView shape(filled, false);
    require(shape.width() == source.width() && shape.height() == source.height() &&
                shape.depth() == source.depth(),
            "a result has the size and the depth of its source");
    if (filled.pixels != nullptr) return filled;
    require(given->structSize >= sizeof filled, "a struct does not tell its size");
    const std::int64_t rowBytes =
        bytesOf(static_cast<PixelLayout>(filled.layout), static_cast<SampleDepth>(filled.depth)) *
        std::int64_t{filled.width};
    filled.stride = (rowBytes + 63) / 64 * 64;
    pixels.reset(std::malloc(Picture::bytesOf(filled.stride, filled.height)));
    if (pixels == nullptr) throw std::bad_alloc();
    filled.pixels = filled.owned = pixels.get();
    return filled;
}

ResultFrame::ResultFrame(VireoFrame* given, const FrameView& source)
    : given_(given), filled_(fill(given, source, pixels_)), view_(filled_, true, source.isReduced()) {}

void ResultFrame::handOver() {
    if (pixels_ == nullptr) return;
    given_->stride = filled_.stride;
    given_->pixels = filled_.pixels;
    given_->owned = pixels_.release();
}

}  // namespace vireo
