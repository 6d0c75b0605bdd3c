// SPDX-License-Identifier: MIT
#include "filters/color/levels_dialog_model.h"

#include "framework/luma_weights.h"

#include <algorithm>
#include <cmath>

namespace Levels {
namespace {

constexpr int leastGamma = 10;
constexpr int mostGamma = 999;

/// The marker's place between black and white is the gamma's logarithm, ten to a tenth across.
int gammaMarker(const Channel& channel) {
    constexpr int halfSpan = 2301;
    constexpr int span = 4603;
    const auto logarithm = static_cast<int>(std::log(std::max<int>(channel.gamma, 1) / 100.0) * 1000);
    return channel.inputBlack + (halfSpan - logarithm) * (channel.inputWhite - channel.inputBlack) / span;
}

std::optional<int> gammaAt(const Channel& channel, int value) {
    if (channel.inputWhite - channel.inputBlack < 2) return std::nullopt;
    value = std::max<int>(std::min(value, channel.inputWhite - 1), channel.inputBlack);
    const int middle = (channel.inputBlack + channel.inputWhite) >> 1;
    const int half = (channel.inputWhite - channel.inputBlack) >> 1;
    return static_cast<int>(std::exp((value - middle) * -230.0 / half / 100.0) * 100.0);
}

}  // namespace

void DialogModel::layOut(const Box& histogram, const Box& line, const Box& gradient, const Box& combo,
                         const Box& group, const Box& client) {
    constexpr int previewWidth = 160;
    constexpr int previewHeight = 120;
    preview_ = boxAt(group.right + ((client.width() - group.right - previewWidth) >> 1), combo.top,
                     previewWidth, previewHeight);
    input_.line = {histogram.left, line.top, histogram.right, line.top + 1};
    output_.line = {histogram.left, gradient.top, histogram.right, gradient.bottom};
}

void DialogModel::countPixels(const FrameView& frame) {
    histogram_ = {};
    for (std::int64_t y = 0; y < frame.height(); ++y) {
        const std::uint8_t* pixel = frame.pixels + y * frame.rowBytes;
        for (std::int64_t x = 0; x < frame.width(); ++x, pixel += bytesPerPixel) {
            ++histogram_[static_cast<std::size_t>(lumaOf(pixel[2], pixel[1], pixel[0]))][0];
            ++histogram_[pixel[2]][1];
            ++histogram_[pixel[1]][2];
            ++histogram_[pixel[0]][3];
        }
    }
    largest_ = {};
    for (const auto& bin : histogram_) {
        for (std::size_t i = 0; i < largest_.size(); ++i) largest_[i] = std::max(largest_[i], bin[i]);
    }
}

Box DialogModel::histogramBar(const Box& histogram, int i) const {
    const auto column = static_cast<std::size_t>(channel_);
    const int height =
        barHeight(histogram.height(), histogram_[static_cast<std::size_t>(i)][column], largest_[column]);
    const int x = histogram.left + barX(histogram.width(), i);
    return {x, histogram.bottom - height, x + 1, histogram.bottom};
}

Channel& DialogModel::current() {
    switch (channel_) {
        case 1: return settings_.red;
        case 2: return settings_.green;
        case 3: return settings_.blue;
        default: return settings_.master;
    }
}

std::int16_t& DialogModel::field(Value value) {
    Channel& channel = current();
    switch (value) {
        case InputBlack: return channel.inputBlack;
        case InputWhite: return channel.inputWhite;
        case OutputBlack: return channel.outputBlack;
        case OutputWhite: return channel.outputWhite;
        default: return channel.gamma;
    }
}

int DialogModel::shown(Value value) const { return const_cast<DialogModel*>(this)->field(value); }

int DialogModel::markerValue(Value value) const {
    return value == Gamma ? gammaMarker(const_cast<DialogModel*>(this)->current()) : shown(value);
}

unsigned DialogModel::change(Value value, int to) {
    std::int16_t& stored = field(value);
    if (stored == to) return 0;
    stored = static_cast<std::int16_t>(to);
    return value == InputBlack || value == InputWhite ? value | Gamma : value;
}

void DialogModel::press(int x, int y) {
    dragged_.reset();
    for (const Value value : values) {
        const Box marker = strip(value).marker(markerValue(value));
        if (!marker.contains(x, y)) continue;
        // Markers that lie on each other at 0 can only be pulled apart to the right.
        const bool stacked = value == InputBlack && current().inputBlack == 0 && current().inputWhite == 0;
        dragged_ = stacked ? InputWhite : value;
        grabOffset_ = marker.left - x;
        lastX_ = x;
        break;
    }
}

unsigned DialogModel::drag(int x) {
    if (!dragged_ || x == lastX_) return 0;
    lastX_ = x;
    const int value = strip(*dragged_).valueAt(x, grabOffset_);
    switch (*dragged_) {
        case InputBlack: return change(InputBlack, std::min<int>(value, current().inputWhite));
        case InputWhite: return change(InputWhite, std::max<int>(value, current().inputBlack));
        case Gamma: {
            const auto gamma = gammaAt(current(), value);
            return gamma ? change(Gamma, *gamma) : 0;
        }
        default: return change(*dragged_, value);
    }
}

Commit DialogModel::commit(Value value, std::optional<int> typed) {
    int least = 0;
    int most = 255;
    if (value == InputBlack) most = current().inputWhite;
    if (value == InputWhite) least = current().inputBlack;
    if (value == Gamma) {
        least = leastGamma;
        most = mostGamma;
    }
    if (!typed || *typed < least || *typed > most) return {true, 0};
    return {false, change(value, *typed)};
}

bool DialogModel::chooseChannel(int channel) {
    if (channel == channel_ || channel < 0 || channel >= channelCount) return false;
    channel_ = channel;
    return true;
}

void DialogModel::load(const Settings& settings) {
    settings_ = settings;
    dragged_.reset();
}

}  // namespace Levels
