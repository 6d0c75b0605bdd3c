// SPDX-License-Identifier: MIT
#include "filters/warp/extract_dialog_model.h"

#include "framework/luma_weights.h"

#include <algorithm>

namespace Extract {

void DialogModel::layOut(const Box& line, const Box& histogram, const Box& client) {
    constexpr int previewWidth = 160;
    constexpr int previewHeight = 120;
    strip_.line = line;
    preview_ = boxAt(histogram.right + (client.right - histogram.right - previewWidth) / 2, histogram.top,
                     previewWidth, previewHeight);
}

void DialogModel::countPixels(const FrameView& frame) {
    histogram_.fill(0);
    for (std::int64_t y = 0; y < frame.height(); ++y) {
        const std::uint8_t* pixel = frame.pixels + y * frame.rowBytes;
        for (std::int64_t x = 0; x < frame.width(); ++x, pixel += bytesPerPixel) {
            ++histogram_[static_cast<std::size_t>(lumaOf(pixel[2], pixel[1], pixel[0]))];
        }
    }
    largestCount_ = *std::max_element(histogram_.begin(), histogram_.end());
}

Box DialogModel::histogramBar(const Box& histogram, int i) const {
    // Only the low 16 bits of the largest count are taken, so a bin of 65536 pixels or more leaves the frame:
    // the picture that users know.
    const int height =
        barHeight(histogram.height(), histogram_[static_cast<std::size_t>(i)], largestCount_ & 0xFFFF);
    const int x = histogram.left + barX(histogram.width(), i);
    return {x, histogram.bottom - height, x + 1, histogram.bottom};
}

Box DialogModel::curveColumn(const Box& box, const TransferCurve& curve, int i) {
    const int height = (curve[static_cast<std::size_t>(i)] * box.height() + 127) / 255;
    const int x = box.left + barX(box.width(), i);
    return {x, box.bottom - height, x + 1, box.bottom};
}

int DialogModel::valueOf(Field field) const {
    switch (field) {
        case Field::Low: return settings_.low;
        case Field::High: return settings_.high;
        default: return settings_.softness;
    }
}

unsigned DialogModel::change(std::uint16_t& value, int to, unsigned redraw) {
    if (value == to) return Nothing;
    value = static_cast<std::uint16_t>(to);
    return redraw | Picture;
}

void DialogModel::press(int x, int y) {
    dragged_.reset();
    for (const Field field : {Field::Low, Field::High}) {
        const Box marker = strip_.marker(valueOf(field));
        if (!marker.contains(x, y)) continue;
        dragged_ = field;
        grabOffset_ = marker.left - x;
        break;
    }
}

unsigned DialogModel::drag(int x) {
    if (!dragged_) return Nothing;
    const int value = strip_.valueAt(x, grabOffset_);
    if (*dragged_ == Field::Low) return change(settings_.low, std::min<int>(settings_.high, value), Low);
    return change(settings_.high, std::max<int>(settings_.low, value), High);
}

Commit DialogModel::commit(Field field, std::optional<int> typed) {
    const auto within = [&](int least, int most) { return typed && *typed >= least && *typed <= most; };
    switch (field) {
        case Field::Low:
            if (within(0, settings_.high)) return {false, change(settings_.low, *typed, Low)};
            break;
        case Field::High:
            if (within(settings_.low, 255)) return {false, change(settings_.high, *typed, High)};
            break;
        case Field::Softness:
            if (within(0, largestSoftness)) return {false, change(settings_.softness, *typed, Softness)};
            break;
    }
    return {true, Nothing};
}

unsigned DialogModel::slideSoftness(int position) { return change(settings_.softness, position, Softness); }

unsigned DialogModel::toggleInvert() {
    settings_.invert = settings_.invert == 0 ? 1 : 0;
    return Picture;
}

}  // namespace Extract
