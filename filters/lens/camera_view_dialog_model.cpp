// SPDX-License-Identifier: MIT
#include "filters/lens/camera_view_dialog_model.h"

namespace CameraView {
namespace {

constexpr FrameRect rectOf(const Box& box) { return {box.left, box.top, box.right, box.bottom}; }

}  // namespace

void layOut(DialogState& state, const Box& sample, const Box& swatch, const Box& group) {
    state.sampleRect = rectOf(sample.grownBy(-1));
    state.swatchRect = rectOf(swatch);
    state.previewRect = rectOf(previewBetween(group.left, group.right, sample.bottom, group.bottom,
                                              previewSize.right, previewSize.bottom));
}

Edit editAngle(int typed) {
    constexpr int fullTurn = 360;
    if (typed > fullTurn) return {fullTurn, fullTurn};
    if (typed < 0) return {0, 0};
    return {typed, std::nullopt};
}

Edit editLength(const DialogState& state, Row row, std::optional<int> typed) {
    const RowRange& range = rows[row];
    if (!typed || *typed < range.smallest || *typed > range.largest || *typed == state.shown[row].written)
        return {};
    return {*typed, std::nullopt};
}

Edit editZoom(int current, double typed) {
    constexpr int largestTyped = 628;
    // Read as 16 bits without sign, so numbers below 0 are too large.
    const auto percent =
        static_cast<std::uint16_t>(static_cast<std::int64_t>(std::clamp(typed, -1e6, 1e6) * 100));
    if (percent > largestTyped) return {std::nullopt, current, true};
    if (percent == current) return {};
    return {percent, std::nullopt};
}

bool takePositions(DialogState& state, const Positions& positions) {
    bool changed = state.redraw != 0;
    for (std::size_t row = 0; row < rows.size(); ++row) {
        const auto position = static_cast<std::uint16_t>(positions[row]);
        changed = changed || state.shown[row].rendered != position;
        state.shown[row].rendered = position;
        state.values[row] = static_cast<std::int16_t>(position);
    }
    state.redraw = 0;
    return changed;
}

void forgetShown(DialogState& state) {
    for (auto& shown : state.shown) shown = {DialogState::nothingShown, DialogState::nothingShown};
}

void reset(DialogState& state) {
    const Settings& fresh = initialSettings;
    const std::int16_t values[] = {fresh.longitude,   fresh.latitude, fresh.roll,
                                   fresh.focalLength, fresh.distance, fresh.zoom};
    std::copy(std::begin(values), std::end(values), state.values);
    state.fillColor = fresh.fillColor;
    state.fillAlphaChannel = fresh.fillAlphaChannel;
}

Settings settingsOf(const DialogState& state) {
    return {state.values[Longitude],   state.values[Latitude], state.values[Roll],
            state.values[FocalLength], state.values[Distance], state.values[Zoom],
            state.fillColor,           state.previewRect,      state.fillAlphaChannel};
}

std::optional<SourcePoint> sampledPoint(const DialogState& state, int x, int y,
                                        const FrameRect& sourceBounds) {
    const FrameRect& area = state.sampleRect;
    if (x < area.left || x >= area.right || y < area.top || y >= area.bottom) return std::nullopt;
    const auto scaled = [](int offset, int size, int sourceSize) {
        return static_cast<int>(std::int64_t{offset} * sourceSize / size);
    };
    return SourcePoint{sourceBounds.left + scaled(x - area.left, area.right - area.left,
                                                  sourceBounds.right - sourceBounds.left),
                       sourceBounds.top + scaled(y - area.top, area.bottom - area.top,
                                                 sourceBounds.bottom - sourceBounds.top)};
}

}  // namespace CameraView
