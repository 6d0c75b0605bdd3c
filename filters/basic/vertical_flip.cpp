// SPDX-License-Identifier: MIT
// Turns the frame upside down by copying whole rows in reverse order, all but the last row in memory: neither
// is the source's read nor the destination's written. Old projects depend on the missing row.
#include "framework/frame_view.h"
#include "framework/registration_order.h"
#include "framework/row_copy_kernels.h"

#include <cstdlib>

namespace VerticalFlip {
namespace {

const RowCopyKernels& kernels = rowCopyKernelsTables.chosen();

/// Height and row bytes count in 16 bits, as hosts have always seen it.
struct Geometry {
    std::int16_t height;
    std::int16_t rowBytes;
};

void render(const FrameView& source, const FrameView& destination, const Geometry& geometry) {
    const FrameExtent sourceExtent(source);
    const FrameExtent destinationExtent(destination);
    const std::int64_t rows = geometry.height - 1;
    const std::int64_t rowLength = std::abs(geometry.rowBytes);
    const auto copy = rows * rowLength < largeFrameBytes ? kernels.copy : kernels.copyPastCaches;
    for (std::int64_t row = 0; row < rows; ++row) {
        const std::int64_t from = row * geometry.rowBytes;
        const std::int64_t to = (rows - 1 - row) * geometry.rowBytes;
        const std::int64_t length =
            std::min(sourceExtent.fitting(from, rowLength, 1), destinationExtent.fitting(to, rowLength, 1));
        copy(source.pixels + from, destination.pixels + to, length);
    }
}

std::int32_t execute(const FilterInvocation& invocation) {
    const FrameView destination = frameThroughPixKit(invocation.destFrame);
    render(
        frameOf(*invocation.sourceFrame), destination,
        {static_cast<std::int16_t>(destination.height()), static_cast<std::int16_t>(destination.rowBytes)});
    return 0;
}

std::int32_t entry(void*, std::int16_t selector, FilterInvocation** invocation) {
    return selector == FilterSelectorExecute ? execute(**invocation) : 0;
}

}  // namespace

void Register(VSK::PluginRegistry& registry, std::uint32_t id) { registry.Add(id, entry, 10052); }

}  // namespace VerticalFlip
