// SPDX-License-Identifier: MIT
// Softens the frame as a lens out of focus would: a Gaussian blur whose reach is a share of the frame's size.
#include "filters/warp/camera_blur.h"

#include "framework/filter.h"
#include "framework/frame_view.h"
#include "framework/registration_order.h"
#include "host/fxkit/fxkit.h"

#include <algorithm>

namespace CameraBlur {
namespace {

std::int32_t render(const FilterInvocation& invocation, const Settings& settings) {
    blur(invocation.sourceFrame, invocation.destFrame, settings);
    return 0;
}

constexpr FilterDeclaration<Settings> filter{
    .id = 10010,
    .initialSettings = {25},
    .workRecord = {.bytes = workRecordBytes, .inContext = true},
    .render = render,
    .dialog = {.templateId = 1400, .procedure = dialogProcedure},
};

}  // namespace

void blur(FrameBuffer* source, FrameBuffer* destination, const Settings& settings) {
    const FrameView from = frameThroughPixKit(source);
    const FrameView to = frameThroughPixKit(destination);
    // A destination of another size takes the part that it has room for.
    const auto reach = [&](std::int64_t size) { return static_cast<double>(settings.amount * size / 1000); };
    const auto size = [](std::int64_t pixels) { return static_cast<std::int32_t>(pixels); };
    FX_GaussianBlur(from.pixels, from.rowBytes, size(from.width()), size(from.height()), bytesPerPixel,
                    to.pixels, to.rowBytes, size(std::min(from.width(), to.width())),
                    size(std::min(from.height(), to.height())), bytesPerPixel, reach(from.width()),
                    reach(from.height()), true, false, 3, 2);
}

void Register(VSK::PluginRegistry& registry) { registerFilter<filter>(registry); }

}  // namespace CameraBlur
