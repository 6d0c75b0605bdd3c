// SPDX-License-Identifier: MIT
// Inverts what is darker than the threshold: a pixel of lower luma has each channel replaced by the threshold
// less the channel, or by 0. Brighter pixels and alpha stay.
#include "filters/basic/solarize_kernels.h"
#include "framework/filter.h"
#include "framework/frame_view.h"
#include "framework/registration_order.h"

namespace Solarize {
namespace {

struct Settings {
    std::int16_t threshold;
};

const SolarizeKernels& kernels = solarizeKernelsTables.chosen();

std::int32_t render(const FilterInvocation& invocation, const Settings& settings) {
    const FrameView source = frameOf(*invocation.sourceFrame);
    const FrameView destination = frameOf(*invocation.destFrame);
    // The destination is walked with the source's geometry.
    const std::int64_t stride = wholePixels(source.rowBytes);
    forEachRow(source, destination, {stride, stride, source.width(), source.height()},
               [&settings](const PixelRow& row) { kernels.row(row, settings.threshold); });
    return 0;
}

constexpr FilterDeclaration<Settings> filter{
    .id = 10049,
    .initialSettings = {128},
    .settingsWithoutHandle = Settings{10},
    .workRecord = {.bytes = 32},
    .render = render,
};

}  // namespace

void Register(VSK::PluginRegistry& registry) { registerFilter<filter>(registry); }

}  // namespace Solarize
