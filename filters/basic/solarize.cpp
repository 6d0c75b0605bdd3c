// SPDX-License-Identifier: MIT
// Inverts what is darker than the threshold: a pixel of lower luma has each channel replaced by the threshold
// less the channel, or by 0. Brighter pixels and alpha stay.
#include "filters/basic/solarize_kernels.h"
#include "framework/frame_view.h"
#include "framework/registration_order.h"
#include "framework/settings.h"

namespace Solarize {
namespace {

struct Settings {
    std::int16_t threshold;
};

constexpr RecordSizes recordSizes{.workRecord = 32, .settings = sizeof(Settings)};

constexpr Settings initialSettings{128};

// An instance that never had settings renders with another value than a fresh one stores.
constexpr Settings settingsWithoutHandle{10};

const SolarizeKernels& kernels = solarizeKernelsTables.chosen();

void render(const FrameView& source, const FrameView& destination, int threshold) {
    // The destination is walked with the source's geometry.
    const std::int64_t stride = wholePixels(source.rowBytes);
    forEachRow(source, destination, {stride, stride, source.width(), source.height()},
               [threshold](const std::uint8_t* from, std::uint8_t* to, std::int64_t width) {
                   kernels.row(from, to, width, threshold);
               });
}

std::int32_t execute(const FilterInvocation& invocation) {
    const Settings settings = settingsOr(invocation, settingsWithoutHandle);
    render(frameOf(*invocation.sourceFrame), frameOf(*invocation.destFrame), settings.threshold);
    return 0;
}

std::int32_t entry(void*, std::int16_t selector, FilterInvocation** invocation) {
    switch (selector) {
        case FilterSelectorExecute: return execute(**invocation);
        case FilterSelectorInitSettings: return initSettings(**invocation, recordSizes, initialSettings);
        case FilterSelectorGetFilterFlags: return filterFlags;
        default: return 0;
    }
}

}  // namespace

void Register(VSK::PluginRegistry& registry, std::uint32_t id) { registry.Add(id, entry, 10049); }

}  // namespace Solarize
