// SPDX-License-Identifier: MIT
// Keeps the pixels near a colour and turns the others to grey, or the other way round.
#include "filters/color/color_pass_kernels.h"
#include "framework/frame_view.h"
#include "framework/registration_order.h"
#include "framework/settings.h"

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

constexpr RecordSizes recordSizes{.workRecord = 16, .settings = 8};

constexpr Settings initialSettings{10, 0, 0x0000FF};

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

std::int32_t execute(const FilterInvocation& invocation) {
    const ColorPassSelection selection = selectionOf(settingsOr(invocation, initialSettings));
    const FrameView source = frameThroughPixKit(invocation.sourceFrame);
    const std::int64_t stride = wholePixels(source.rowBytes);
    forEachRow(source, frameThroughPixKit(invocation.destFrame),
               {stride, stride, source.width(), source.height()},
               [&](const std::uint8_t* from, std::uint8_t* to, std::int64_t width) {
                   kernels.row(from, to, width, selection);
               });
    return 0;
}

/// There is no dialog; hosts see the work record come and go.
std::int32_t setup(const FilterInvocation& invocation) {
    const WorkRecord workRecord(invocation, recordSizes.workRecord);
    return 0;
}

std::int32_t entry(void*, std::int16_t selector, FilterInvocation** invocation) {
    switch (selector) {
        case FilterSelectorExecute: return execute(**invocation);
        case FilterSelectorSetup: return setup(**invocation);
        case FilterSelectorInitSettings: return initSettings(**invocation, recordSizes, initialSettings);
        case FilterSelectorGetFilterFlags: return filterFlags;
        default: return 0;
    }
}

}  // namespace

void Register(VSK::PluginRegistry& registry, std::uint32_t id) { registry.Add(id, entry, 10015); }

}  // namespace ColorPass
