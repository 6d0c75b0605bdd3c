// SPDX-License-Identifier: MIT
// Keeps the pixels near a colour and turns the others to grey, or the other way round.
#include "filters/color/color_pass_kernels.h"
#include "framework/filter.h"
#include "framework/frame_view.h"
#include "framework/registration_order.h"

namespace ColorPass {
namespace {

struct Settings {
    std::uint16_t similarity;
    std::uint8_t reverse;
    std::uint32_t color;  ///< Red in the low byte, then green, blue and a byte unused.

    template <class Visit>
    void fields(Visit&& visit) {
        visit(similarity), visit(reverse), visit(color);
    }
};

const ColorPassKernels& kernels = colorPassKernelsTables.chosen();

ColorPassSelection selectionOf(const Settings& settings) {
    const int tolerance = 2 * settings.similarity;
    ColorPassSelection selection{0, 0xFF000000, settings.reverse != 0};
    for (int channel = 0; channel < 3; ++channel) {
        const int level = static_cast<int>(settings.color >> 8 * channel & 0xFF);
        const int shift = 16 - 8 * channel;
        selection.lowest |= static_cast<std::uint32_t>(std::max(level - tolerance, 0)) << shift;
        selection.highest |= static_cast<std::uint32_t>(std::min(level + tolerance, 255)) << shift;
    }
    return selection;
}

std::int32_t render(const FilterInvocation& invocation, const Settings& settings) {
    const ColorPassSelection selection = selectionOf(settings);
    const FrameView source = frameThroughPixKit(invocation.sourceFrame);
    const std::int64_t stride = wholePixels(source.rowBytes);
    forEachRow(source, frameThroughPixKit(invocation.destFrame),
               {stride, stride, source.width(), source.height()},
               [&](const PixelRow& row) { kernels.row(row, selection); });
    return 0;
}

constexpr FilterDeclaration<Settings> filter{
    .id = 10015,
    .initialSettings = {10, 0, 0x0000FF},
    .workRecord = {.bytes = 16, .withoutDialog = true},
    .render = render,
};

}  // namespace

void Register(VSK::PluginRegistry& registry) { registerFilter<filter>(registry); }

}  // namespace ColorPass
