// SPDX-License-Identifier: MIT
// Swaps the pixels close to a target colour for a replacement, shaded by the pixel's luma or flat.
#include "filters/warp/color_replace_kernels.h"
#include "framework/filter.h"
#include "framework/frame_view.h"
#include "framework/registration_order.h"

#include <algorithm>

namespace ColorReplace {
namespace {

/// Colours carry red in the low byte.
struct Settings {
    std::uint16_t similarity;
    std::uint8_t solid;
    std::uint32_t target;
    std::uint32_t replacement;

    template <class Visit>
    void fields(Visit&& visit) {
        visit(similarity);
        visit(solid);
        visit(target);
        visit(replacement);
    }
};

const ColorReplaceKernels& kernels = colorReplaceKernelsTables.chosen();

constexpr std::uint32_t pixelOrder(std::uint32_t color) {
    return (color & 0xFF) << 16 | (color & 0xFF00) | (color >> 16 & 0xFF);
}

// Width, height and row bytes are narrowed to 16 bits: larger frames have always come out in part.
constexpr std::int16_t narrowed(std::int64_t value) { return static_cast<std::int16_t>(value); }

std::int32_t render(const FilterInvocation& invocation, const Settings& settings) {
    const FrameView source = frameThroughPixKit(invocation.sourceFrame);
    const FrameView destination = frameThroughPixKit(invocation.destFrame);
    // The tolerance is a cube around the target of twice the similarity.
    const ColorSwap swap{pixelOrder(settings.target), pixelOrder(settings.replacement),
                         static_cast<std::uint8_t>(std::min(2 * settings.similarity, 255))};
    const auto replace = settings.solid != 0 ? kernels.solid : kernels.shaded;
    const std::int64_t stride = wholePixels(narrowed(source.rowBytes));
    forEachRow(source, destination, {stride, stride, narrowed(source.width()), narrowed(source.height())},
               [&](const PixelRow& row) { replace(row, swap); });
    return 0;
}

constexpr FilterDeclaration<Settings> filter{
    .id = 10016,
    .initialSettings = {10, 0, 0x000000FF, 0x00FF0000},
    .workRecord = {.bytes = 24, .withoutDialog = true},
    .render = render,
};

}  // namespace

void Register(VSK::PluginRegistry& registry) { registerFilter<filter>(registry); }

}  // namespace ColorReplace
