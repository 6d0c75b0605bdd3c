// SPDX-License-Identifier: MIT
// Rolls the picture upward through the frame in a cycle of 30 steps, as a television does that lost its
// vertical hold. A dark bar with a line of inverted picture in it marks the seam.
#include "framework/filter.h"
#include "framework/frame_view.h"
#include "framework/registration_order.h"

#include <cstring>

namespace VerticalHold {
namespace {

/// Where the roll stands.
struct Roll {
    FrameRect bounds;  ///< Of the destination.
    std::int64_t height;
    std::int64_t shift;  ///< Rows that the picture has moved up.
    std::int64_t seam() const { return height - shift; }
};

FrameRect rectangle(const Roll& roll, std::int64_t top, std::int64_t bottom) {
    return {roll.bounds.left, static_cast<std::int32_t>(top), roll.bounds.right,
            static_cast<std::int32_t>(bottom)};
}

void copyRolled(FrameBuffer* source, FrameBuffer* destination, const Roll& roll) {
    const auto [left, top, right, bottom] = roll.bounds;
    const FrameRect lower = rectangle(roll, roll.shift, bottom);
    const FrameRect lowerTarget = rectangle(roll, top, roll.seam());
    vpixCopy(source, destination, &lower, &lowerTarget, VPixCopyReplace);
    if (roll.seam() < top) return;  // The seam counts from 0 even where the bounds begin below it.
    const FrameRect upper = rectangle(roll, top, roll.shift);
    const FrameRect upperTarget = rectangle(roll, roll.seam(), bottom);
    vpixCopy(source, destination, &upper, &upperTarget, VPixCopyReplace);
}

void invertRow(const std::uint8_t* source, std::uint8_t* destination, std::int64_t width) {
    for (std::int64_t i = 0; i < width; ++i) {
        std::uint32_t pixel;
        std::memcpy(&pixel, source + bytesPerPixel * i, sizeof pixel);
        pixel = ~pixel;
        std::memcpy(destination + bytesPerPixel * i, &pixel, sizeof pixel);
    }
}

/// Rows from the seam upward, which is forward in memory.
void drawBar(const FrameView& source, const FrameView& destination, const Roll& roll) {
    constexpr std::int64_t lineDistance = 3;
    const std::int64_t bar = roll.height / 6;
    const std::int64_t rows = std::min(bar, roll.seam());
    const std::int64_t lineEnd = lineDistance + bar / 10;
    const std::int64_t lineSource = roll.height / 4 * source.rowBytes;
    const FrameExtent sourceExtent(source);
    const FrameExtent destinationExtent(destination);

    for (std::int64_t row = 0; row < rows; ++row) {
        const std::int64_t offset = (roll.shift + row) * destination.rowBytes;
        const std::int64_t width = destinationExtent.fitting(offset, destination.width(), bytesPerPixel);
        if (width <= 0) continue;
        std::uint8_t* to = destination.pixels + offset;
        if (row >= lineDistance && row <= lineEnd) {
            invertRow(source.pixels + lineSource, to, sourceExtent.fitting(lineSource, width, bytesPerPixel));
        } else {
            std::memset(to, 0, static_cast<std::size_t>(width * bytesPerPixel));
        }
    }
}

std::int32_t render(const FilterInvocation& invocation, const NoSettings&) {
    FrameBuffer* const source = invocation.sourceFrame;
    FrameBuffer* const destination = invocation.destFrame;
    constexpr int cycle = 30;
    const FrameView target = frameThroughPixKit(destination);
    const int phase = static_cast<std::int32_t>(invocation.frameTime) % cycle;
    if (phase < 0) {
        vpixCopy(source, destination, &target.bounds, &target.bounds, VPixCopyReplace);
        return 0;
    }
    const auto shift = static_cast<std::int64_t>(phase / 29.0 * static_cast<double>(target.height()));
    const Roll roll{target.bounds, target.height(), static_cast<std::int16_t>(shift)};
    copyRolled(source, destination, roll);
    drawBar(frameThroughPixKit(source), target, roll);
    return 0;
}

constexpr FilterDeclaration<NoSettings> filter{.id = 10053, .render = render};

}  // namespace

void Register(VSK::PluginRegistry& registry) { registerFilter<filter>(registry); }

}  // namespace VerticalHold
