// SPDX-License-Identifier: MIT
#include "filters/lens/camera_view_dialog_model.h"

namespace CameraView {
namespace {

constexpr std::uint16_t nothing = 0x8001;  // No row shows this value.

}  // namespace

DialogModel::DialogModel(const Settings& settings)
    : values_{settings.longitude,   settings.latitude, settings.roll,
              settings.focalLength, settings.distance, settings.zoom},
      fillColor_(settings.fillColor),
      fillAlphaChannel_(settings.fillAlphaChannel) {
    forgetShown();
}

void DialogModel::layOut(const Box& sample, const Box& swatch, const Box& group) {
    sample_ = sample.grownBy(-1);
    swatch_ = swatch;
    preview_ = previewBetween(group.left, group.right, sample.bottom, group.bottom, previewSize.right,
                              previewSize.bottom);
}

Edit DialogModel::editAngle(int typed) {
    constexpr int fullTurn = 360;
    if (typed > fullTurn) return {fullTurn, fullTurn};
    if (typed < 0) return {0, 0};
    return {typed, std::nullopt};
}

Edit DialogModel::editLength(Row row, std::optional<int> typed) const {
    const RowRange& range = rows[row];
    if (!typed || *typed < range.smallest || *typed > range.largest || *typed == shown_[row].written)
        return {};
    return {*typed, std::nullopt};
}

Edit DialogModel::editZoom(int current, double typed) {
    constexpr int largestTyped = 628;
    // Read as 16 bits without sign, so numbers below 0 are too large.
    const auto percent =
        static_cast<std::uint16_t>(static_cast<std::int64_t>(std::clamp(typed, -1e6, 1e6) * 100));
    if (percent > largestTyped) return {std::nullopt, current, true};
    if (percent == current) return {};
    return {percent, std::nullopt};
}

bool DialogModel::takePositions(const Positions& positions) {
    bool changed = redraw_;
    for (std::size_t row = 0; row < rows.size(); ++row) {
        const auto position = static_cast<std::uint16_t>(positions[row]);
        changed = changed || shown_[row].rendered != position;
        shown_[row].rendered = position;
        values_[row] = static_cast<std::int16_t>(position);
    }
    redraw_ = false;
    return changed;
}

void DialogModel::forgetShown() { shown_.fill({nothing, nothing}); }

void DialogModel::reset() {
    const DialogModel fresh(initialSettings);
    values_ = fresh.values_;
    fillColor_ = fresh.fillColor_;
    fillAlphaChannel_ = fresh.fillAlphaChannel_;
}

Settings DialogModel::settings() const {
    const FrameRect reference{preview_.left, preview_.top, preview_.right, preview_.bottom};
    return {values_[Longitude], values_[Latitude], values_[Roll], values_[FocalLength], values_[Distance],
            values_[Zoom],      fillColor_,        reference,     fillAlphaChannel_};
}

std::optional<SourcePoint> DialogModel::sampledPoint(int x, int y, const FrameRect& sourceBounds) const {
    if (!sample_.contains(x, y)) return std::nullopt;
    const auto scaled = [](int offset, int size, int sourceSize) {
        return static_cast<int>(std::int64_t{offset} * sourceSize / size);
    };
    return SourcePoint{
        sourceBounds.left + scaled(x - sample_.left, sample_.width(), sourceBounds.right - sourceBounds.left),
        sourceBounds.top + scaled(y - sample_.top, sample_.height(), sourceBounds.bottom - sourceBounds.top)};
}

}  // namespace CameraView
