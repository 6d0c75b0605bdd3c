// SPDX-License-Identifier: MIT
// Mirrors each row left to right, in the host's native pixel formats: pixels move whole.
#include "filters/lens/horizontal_flip_kernels.h"
#include "framework/frame_view.h"
#include "framework/pixel_formats.h"
#include "framework/registration_order.h"
#include "framework/vpix_suites.h"

#include <algorithm>
#include <iterator>

namespace HorizontalFlip {
namespace {

const HorizontalFlipKernels& kernels = horizontalFlipKernelsTables.chosen();

struct Format {
    std::uint32_t code;
    std::int64_t pixelBytes;
    HorizontalFlipKernels::Row row;
};

const Format formats[] = {
    {PixKit::formatCode("VUya"), 16, kernels.row16}, {PixKit::formatCode("BGra"), 16, kernels.row16},
    {PixKit::formatCode("ARgb"), 16, kernels.row16}, {PixKit::formatCode("Vuya"), 8, kernels.row8},
    {PixKit::formatCode("Bgra"), 8, kernels.row8},   {PixKit::formatCode("Argb"), 8, kernels.row8},
    {PixKit::formatCode("vuya"), 4, kernels.row4},   {PixKit::formatCode("argb"), 4, kernels.row4},
    {PixKit::formatCode("bgra"), 4, kernels.row4},
};

/// Hosts see this code written behind the last format.
constexpr std::uint32_t endOfFormats = PixKit::formatCode("badf");

std::int32_t nameFormat(FilterInvocation& invocation) {
    const bool listed = invocation.pixelFormatIndex < std::size(formats);
    invocation.pixelFormat = listed ? formats[invocation.pixelFormatIndex].code : endOfFormats;
    return listed ? 0 : 1;
}

void render(const FrameView& source, const FrameView& destination, const Format& format) {
    const RowWalk walk{source.rowBytes, destination.rowBytes, destination.width(), destination.height(),
                       format.pixelBytes};
    const bool large = walk.width * walk.height * walk.pixelBytes >= largeFrameBytes;
    const auto mirror = large && format.row == kernels.row4 ? kernels.row4PastCaches : format.row;
    forEachRow(source, destination, walk,
               [&](const std::uint8_t* from, std::uint8_t* to, std::int64_t width) {
                   // What a short source row lacks is missing at the start of the mirrored one.
                   mirror(from, to + (walk.width - width) * format.pixelBytes, width);
               });
}

std::int32_t execute(const FilterInvocation& invocation) {
    ScopedVPix frame(invocation.sourceFrame);
    const std::uint32_t code = QueryPixelFormat(frame);
    frame.release();
    const Format* format = std::find_if(std::begin(formats), std::end(formats),
                                        [code](const Format& known) { return known.code == code; });
    if (format != std::end(formats)) {
        render(frameThroughPixKit(invocation.sourceFrame), frameThroughPixKit(invocation.destFrame), *format);
    }
    return 0;
}

std::int32_t entry(void*, std::int16_t selector, FilterInvocation** invocation) {
    switch (selector) {
        case FilterSelectorExecute: return execute(**invocation);
        case FilterSelectorGetPixelFormat: return nameFormat(**invocation);
        default: return 0;
    }
}

}  // namespace

void Register(VSK::PluginRegistry& registry, std::uint32_t id) { registry.Add(id, entry, 10030); }

}  // namespace HorizontalFlip
