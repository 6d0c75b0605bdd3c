// SPDX-License-Identifier: MIT
// Softens the frame as a lens out of focus would: a Gaussian blur whose reach is a share of the frame's size.
#include "filters/warp/camera_blur.h"

#include "filters/warp/camera_blur_dialog.h"
#include "framework/dialog_launcher.h"
#include "framework/frame_view.h"
#include "framework/registration_order.h"
#include "framework/settings.h"
#include "host/fxkit/fxkit.h"

#include <algorithm>
#include <cstring>

namespace CameraBlur {
namespace {

constexpr std::uint16_t dialogId = 1400;

constexpr Settings initialSettings{25};

constexpr RecordSizes recordSizes{
    .workRecord = workRecordSize, .settings = sizeof(Settings), .workRecordIsContext = true};

std::int32_t execute(const FilterInvocation& invocation) {
    render(invocation.sourceFrame, invocation.destFrame, settingsOr(invocation, initialSettings));
    return 0;
}

std::int32_t setup(FilterInvocation** handle) {
    WorkRecord workRecord = newWorkRecord(**handle, recordSizes);
    if (!workRecord) return static_cast<std::int32_t>(noDialog);
    const WorkRecordFields fields{settingsOr(**handle, initialSettings), handle, {}};
    std::memcpy(*workRecord.get(), &fields, sizeof fields);
    return static_cast<std::int32_t>(runSettingsDialog(**handle, dialogId, dialogProcedure, workRecord));
}

std::int32_t entry(void*, std::int16_t selector, FilterInvocation** invocation) {
    switch (selector) {
        case FilterSelectorExecute: return execute(**invocation);
        case FilterSelectorSetup: return setup(invocation);
        case FilterSelectorInitSettings: return initSettings(**invocation, recordSizes, initialSettings);
        default: return 0;
    }
}

}  // namespace

void render(FrameBuffer* source, FrameBuffer* destination, const Settings& settings) {
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

void Register(VSK::PluginRegistry& registry, std::uint32_t id) { registry.Add(id, entry, 10010); }

}  // namespace CameraBlur
