// SPDX-License-Identifier: MIT
// Turns the picture into a grey matte of its luminance: white inside an input range, black outside, soft at
// the range's ends. Alpha stays.
#include "filters/warp/extract.h"

#include "framework/filter.h"
#include "framework/frame_view.h"
#include "framework/registration_order.h"

#include <algorithm>

namespace Extract {
namespace {

const ExtractKernels& kernels = extractKernelsTables.chosen();

std::int32_t render(const FilterInvocation& invocation, const Settings& settings) {
    drawMatte(invocation.sourceFrame, invocation.destFrame, settings);
    return 0;
}

constexpr FilterDeclaration<Settings> filter{
    .id = 10022,
    .initialSettings = {64, 192, 25, 0},
    .workRecord = {.bytes = workRecordBytes},
    .render = render,
    .dialog = {.templateId = 1800, .procedure = dialogProcedure},
};

}  // namespace

TransferCurve transferCurve(const Settings& settings) {
    const std::int64_t low = settings.low;
    const std::int64_t high = settings.high;
    const std::int64_t softness = (high - low) * settings.softness / 200;
    const auto limited = [](std::int64_t entry) { return std::clamp<std::int64_t>(entry, 0, 255); };
    const std::int64_t riseBegin = limited(low - softness);
    const std::int64_t riseEnd = limited(low + softness);
    const std::int64_t fallBegin = limited(high - softness);
    const std::int64_t fallEnd = limited(high + softness);

    // A ramp is as steep as if neither end were cut off at 0 or 255: it then begins or ends part-way, which
    // old projects depend on.
    TransferCurve curve{};
    const auto set = [&](std::int64_t entry, std::int64_t value) {
        curve[static_cast<std::size_t>(entry)] = static_cast<std::uint8_t>(value);
    };
    for (std::int64_t i = riseBegin; i < riseEnd; ++i) set(i, 255 * (i - riseBegin) / (2 * softness));
    for (std::int64_t i = riseEnd; i < fallBegin; ++i) set(i, 255);
    for (std::int64_t i = fallBegin; i < fallEnd; ++i) set(i, 255 * (fallEnd - i) / (2 * softness));
    for (std::int64_t i = fallEnd; i < 256; ++i) set(i, 0);
    if (settings.invert != 0) {
        for (std::uint8_t& value : curve) value = static_cast<std::uint8_t>(255 - value);
    }
    return curve;
}

void drawMatte(FrameBuffer* source, FrameBuffer* destination, const Settings& settings) {
    const FrameView from = frameThroughPixKit(source);
    const TransferCurve curve = transferCurve(settings);
    forEachRow(from, frameThroughPixKit(destination),
               {from.rowBytes, from.rowBytes, from.width(), from.height()},
               [&](const PixelRow& row) { kernels.row(row, curve); });
}

void Register(VSK::PluginRegistry& registry) { registerFilter<filter>(registry); }

}  // namespace Extract
