// SPDX-License-Identifier: MIT
// Fills the frame with a grid of small copies of it.
#include "framework/filter.h"
#include "framework/registration_order.h"
#include "host/pixkit/pixkit.h"

namespace Replicate {
namespace {

struct Settings {
    std::int16_t count;
};

/// Cells are counted from 0, not from the bounds, with edges of 16 bits.
FrameRect cell(const FrameRect& bounds, std::int64_t count, std::int64_t column, std::int64_t row) {
    const std::int64_t width = std::int64_t{bounds.right} - bounds.left;
    const std::int64_t height = std::int64_t{bounds.bottom} - bounds.top;
    const auto edge = [count](std::int64_t index, std::int64_t length) {
        return static_cast<std::int16_t>(index * length / count);
    };
    return {edge(column, width), edge(row, height), edge(column + 1, width), edge(row + 1, height)};
}

/// The first cell is the source scaled down, the others are copies of the first.
std::int32_t render(const FilterInvocation& invocation, const Settings& settings) {
    FrameBuffer* const destination = invocation.destFrame;
    const int count = settings.count;
    FrameRect bounds;
    vpixGetBounds(destination, &bounds);
    if (count <= 0) return 0;
    const FrameRect first = cell(bounds, count, 0, 0);
    // Where the first cell holds nothing, so do all its copies, of which there may be a thousand millions.
    if (first.right <= first.left || first.bottom <= first.top) return 0;

    vpixCopy(invocation.sourceFrame, destination, &bounds, &first, VPixCopyReplace);
    for (int row = 0; row < count; ++row) {
        for (int column = row == 0 ? 1 : 0; column < count; ++column) {
            const FrameRect target = cell(bounds, count, column, row);
            vpixCopy(destination, destination, &first, &target, VPixCopyReplace);
        }
    }
    return 0;
}

constexpr FilterDeclaration<Settings> filter{
    .id = 10042,
    .initialSettings = {2},
    .workRecord = {.bytes = 32},
    .render = render,
};

}  // namespace

void Register(VSK::PluginRegistry& registry) { registerFilter<filter>(registry); }

}  // namespace Replicate
