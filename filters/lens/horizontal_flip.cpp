// SPDX-License-Identifier: MIT
// Mirrors each row left to right, in the host's native pixel formats: pixels move whole.
#include "filters/lens/horizontal_flip_kernels.h"
#include "framework/filter.h"
#include "framework/frame_view.h"
#include "framework/registration_order.h"
#include "framework/vpix_suites.h"
#include "host/pixkit/pixel_formats.h"

#include <algorithm>
#include <array>

namespace HorizontalFlip {
namespace {

const HorizontalFlipKernels& kernels = horizontalFlipKernelsTables.chosen();

struct Format {
    std::uint32_t code;
    std::int64_t pixelBytes;
};

constexpr std::array<Format, 9> formats{{
    {PixKit::formatCode("VUya"), 16},
    {PixKit::formatCode("BGra"), 16},
    {PixKit::formatCode("ARgb"), 16},
    {PixKit::formatCode("Vuya"), 8},
    {PixKit::formatCode("Bgra"), 8},
    {PixKit::formatCode("Argb"), 8},
    {PixKit::formatCode("vuya"), 4},
    {PixKit::formatCode("argb"), 4},
    {PixKit::formatCode("bgra"), 4},
}};

constexpr auto formatCodes = [] {
    std::array<std::uint32_t, formats.size()> codes{};
    for (std::size_t i = 0; i < codes.size(); ++i) codes[i] = formats[i].code;
    return codes;
}();

HorizontalFlipKernels::Row rowKernel(std::int64_t pixelBytes) {
    switch (pixelBytes) {
        case 16: return kernels.row16;
        case 8: return kernels.row8;
        default: return kernels.row4;
    }
}

void mirror(const FrameView& source, const FrameView& destination, const Format& format) {
    const RowWalk walk{source.rowBytes, destination.rowBytes, destination.width(), destination.height(),
                       format.pixelBytes};
    const auto mirrorRow = rowKernel(format.pixelBytes);
    forEachRow(source, destination, walk, [&](PixelRow row) {
        // What a short source row lacks is missing at the start of the mirrored one.
        row.destination += (walk.width - row.width) * format.pixelBytes;
        mirrorRow(row);
    });
}

std::int32_t render(const FilterInvocation& invocation, const NoSettings&) {
    ScopedVPix frame(invocation.sourceFrame);
    const std::uint32_t code = QueryPixelFormat(frame);
    frame.release();
    const auto* format = std::find_if(formats.begin(), formats.end(),
                                      [code](const Format& offered) { return offered.code == code; });
    if (format != formats.end()) {
        mirror(frameThroughPixKit(invocation.sourceFrame), frameThroughPixKit(invocation.destFrame), *format);
    }
    return 0;
}

constexpr FilterDeclaration<NoSettings> filter{
    .id = 10030,
    .formats = {.codes = formatCodes, .behindLast = PixKit::formatCode("badf")},
    .render = render,
};

}  // namespace

void Register(VSK::PluginRegistry& registry) { registerFilter<filter>(registry); }

}  // namespace HorizontalFlip
