// SPDX-License-Identifier: MIT
// Turns the frame upside down by copying whole rows in reverse order, all but the last row in memory: neither
// is the source's read nor the destination's written. Old projects depend on the missing row.
#include "framework/filter.h"
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

void copyRows(const FrameView& source, const FrameView& destination, const Geometry& geometry) {
    const FrameExtent sourceExtent(source);
    const FrameExtent destinationExtent(destination);
    const std::int64_t rows = geometry.height - 1;
    const std::int64_t rowLength = std::abs(geometry.rowBytes);
    const bool pastCaches = goesPastCaches(source.pixels, destination.pixels, rowLength, rows);
    const auto copy = pastCaches ? kernels.copyPastCaches : kernels.copy;
    for (std::int64_t row = 0; row < rows; ++row) {
        const std::int64_t from = row * geometry.rowBytes;
        const std::int64_t to = (rows - 1 - row) * geometry.rowBytes;
        const std::int64_t length =
            std::min(sourceExtent.fitting(from, rowLength, 1), destinationExtent.fitting(to, rowLength, 1));
        copy(source.pixels + from, destination.pixels + to, length);
    }
    if (pastCaches) fencePastCaches();
}

std::int32_t render(const FilterInvocation& invocation, const NoSettings&) {
    const FrameView destination = frameThroughPixKit(invocation.destFrame);
    copyRows(
        frameOf(*invocation.sourceFrame), destination,
        {static_cast<std::int16_t>(destination.height()), static_cast<std::int16_t>(destination.rowBytes)});
    return 0;
}

constexpr FilterDeclaration<NoSettings> filter{.id = 10052, .render = render};

}  // namespace

void Register(VSK::PluginRegistry& registry) { registerFilter<filter>(registry); }

}  // namespace VerticalFlip
