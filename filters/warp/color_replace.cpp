// SPDX-License-Identifier: MIT
// Swaps the pixels close to a target colour for a replacement, shaded by the pixel's luma or flat.
#include "filters/warp/color_replace_kernels.h"
#include "framework/frame_view.h"
#include "framework/registration_order.h"
#include "framework/settings.h"

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

constexpr Settings initialSettings{10, 0, 0x000000FF, 0x00FF0000};

constexpr RecordSizes recordSizes{.workRecord = 24, .settings = 12};

const ColorReplaceKernels& kernels = colorReplaceKernelsTables.chosen();

constexpr std::uint32_t pixelOrder(std::uint32_t color) {
    return (color & 0xFF) << 16 | (color & 0xFF00) | (color >> 16 & 0xFF);
}

// Width, height and row bytes are narrowed to 16 bits: larger frames have always come out in part.
constexpr std::int16_t narrowed(std::int64_t value) { return static_cast<std::int16_t>(value); }

void render(const FrameView& source, const FrameView& destination, const Settings& settings) {
    // The tolerance is a cube around the target of twice the similarity.
    const ColorSwap swap{pixelOrder(settings.target), pixelOrder(settings.replacement),

                         static_cast<std::uint8_t>(std::min(2 * settings.similarity, 255))};
    const auto row = settings.solid != 0 ? kernels.solid : kernels.shaded;
    const std::int64_t stride = wholePixels(narrowed(source.rowBytes));
    forEachRow(
        source, destination, {stride, stride, narrowed(source.width()), narrowed(source.height())},
        [&](const std::uint8_t* from, std::uint8_t* to, std::int64_t width) { row(from, to, width, swap); });
}

std::int32_t execute(const FilterInvocation& invocation) {
    render(frameThroughPixKit(invocation.sourceFrame), frameThroughPixKit(invocation.destFrame),
           settingsOr(invocation, initialSettings));
    return 0;
}

// There is no dialog; hosts have always seen the record allocated.
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

void Register(VSK::PluginRegistry& registry, std::uint32_t id) { registry.Add(id, entry, 10016); }

}  // namespace ColorReplace
