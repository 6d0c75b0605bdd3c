// SPDX-License-Identifier: GPL-2.0-or-later
#include "bridges/frei0r/instance.h"

#include "host/vireo_host.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string_view>

namespace frei0r {
namespace {

/// What the filters' 16-bit sizes can take.
constexpr unsigned largestSide = std::numeric_limits<std::int16_t>::max();

int checkedSide(unsigned side) {
    if (side == 0 || side > largestSide) {
        throw std::length_error("a frame's side of " + std::to_string(side) + " pixels is outside 1 to " +
                                std::to_string(largestSide));
    }
    return static_cast<int>(side);
}

std::int64_t readValue(std::span<const std::uint8_t> record, const VRM::Parameter& parameter) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, record.data() + parameter.offset, static_cast<std::size_t>(parameter.size));
    const int unused = 64 - 8 * parameter.size;
    if (parameter.minimum < 0) return static_cast<std::int64_t>(bits << unused) >> unused;
    return static_cast<std::int64_t>(bits);
}

void writeValue(std::span<std::uint8_t> record, const VRM::Parameter& parameter, std::int64_t value) {
    std::memcpy(record.data() + parameter.offset, &value, static_cast<std::size_t>(parameter.size));
}

std::uint8_t channelByte(float channel) {
    return static_cast<std::uint8_t>(std::lround(std::clamp(channel, 0.0F, 1.0F) * 255));
}

std::optional<double> positiveNumber(std::string_view text) {
    double value = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
    if (read.ec != std::errc() || read.ptr != text.data() + text.size()) return std::nullopt;
    if (!std::isfinite(value) || value <= 0) return std::nullopt;
    return value;
}

/// "25", "29.97" or "30000/1001".
std::optional<double> positiveRatio(std::string_view text) {
    const std::size_t slash = text.find('/');
    const auto numerator = positiveNumber(text.substr(0, slash));
    if (!numerator || slash == std::string_view::npos) return numerator;
    const auto denominator = positiveNumber(text.substr(slash + 1));
    return denominator ? std::optional(*numerator / *denominator) : std::nullopt;
}

std::optional<double> secondsOfUnit(std::string_view text) {
    if (text == "s" || text == "seconds") return 1;
    if (text == "ms" || text == "milliseconds") return 0.001;
    return positiveRatio(text);
}

}  // namespace

Instance::Instance(const Effect& effect, unsigned width, unsigned height)
    : effect_(effect),
      width_(checkedSide(width)),
      height_(checkedSide(height)),
      filter_(effect.filter->entry),
      ring_(effect.lookBack == 0 ? 0 : static_cast<std::size_t>(effect.lookBack) + 1,
            std::size_t{width} * height) {
    if (!effect.takesRowsFromTheTop) {
        turnedSource_.resize(std::size_t{width} * height);
        turnedResult_.resize(std::size_t{width} * height);
    }
    timeTexts_[static_cast<int>(TimeParameter::TimeUnit)] = "s";
}

void Instance::setParameter(int index, f0r_param_t value) {
    const std::lock_guard lock(mutex_);
    const auto& parameters = effect_.filter->properties.parameters;
    const std::span<std::uint8_t> record = filter_.settings();
    if (index < static_cast<int>(parameters.size())) {
        const VRM::Parameter& parameter = parameters[static_cast<std::size_t>(index)];
        if (parameter.kind == VRM::ParameterKind::Color) {
            const auto& color = *static_cast<const f0r_param_color*>(value);
            if (std::isnan(color.r) || std::isnan(color.g) || std::isnan(color.b)) return;
            // Red lies in the low byte; the top byte is no part of the colour.
            record[parameter.offset] = channelByte(color.r);
            record[parameter.offset + 1] = channelByte(color.g);
            record[parameter.offset + 2] = channelByte(color.b);
            return;
        }
        const double number = *static_cast<const double*>(value);
        if (std::isnan(number)) return;
        if (parameter.kind == VRM::ParameterKind::Boolean) {
            writeValue(record, parameter, number >= 0.5 ? 1 : 0);
        } else {
            const double range = parameter.maximum - parameter.minimum;
            writeValue(record, parameter,
                       std::llround(parameter.minimum + std::clamp(number, 0.0, 1.0) * range));
        }
        return;
    }

    const auto which = static_cast<TimeParameter>(index - static_cast<int>(parameters.size()));
    const std::string_view text = *static_cast<const f0r_param_string*>(value);
    std::optional<double> number;
    switch (which) {
        case TimeParameter::FrameRate:
            number = text.empty() ? 0 : positiveRatio(text);
            if (number) frameRate_ = *number;
            break;
        case TimeParameter::TimeUnit:
            number = secondsOfUnit(text);
            if (number) timeUnit_ = *number;
            break;
        case TimeParameter::ClipLength:
            number = text.empty() ? 0 : positiveNumber(text);
            if (number) clipLength_ = static_cast<std::int64_t>(std::min(*number, 1e9));
            break;
    }
    if (number) timeTexts_[static_cast<int>(which)] = text;
}

void Instance::getParameter(int index, f0r_param_t value) {
    const std::lock_guard lock(mutex_);
    const auto& parameters = effect_.filter->properties.parameters;
    const std::span<const std::uint8_t> record = filter_.settings();
    if (index >= static_cast<int>(parameters.size())) {
        std::string& text = timeTexts_[index - static_cast<int>(parameters.size())];
        *static_cast<f0r_param_string*>(value) = text.data();
        return;
    }
    const VRM::Parameter& parameter = parameters[static_cast<std::size_t>(index)];
    const std::int64_t stored = readValue(record, parameter);
    switch (parameter.kind) {
        case VRM::ParameterKind::Boolean: *static_cast<double*>(value) = stored != 0 ? 1 : 0; break;
        case VRM::ParameterKind::Number:
            *static_cast<double*>(value) =
                (static_cast<double>(stored) - parameter.minimum) / (parameter.maximum - parameter.minimum);
            break;
        case VRM::ParameterKind::Color:
            *static_cast<f0r_param_color*>(value) = {static_cast<float>(record[parameter.offset]) / 255,
                                                     static_cast<float>(record[parameter.offset + 1]) / 255,
                                                     static_cast<float>(record[parameter.offset + 2]) / 255};
            break;
    }
}

void Instance::update(double time, const std::uint32_t* source, std::uint32_t* destination) {
    const std::lock_guard lock(mutex_);
    const std::int64_t number = frameNumber(time);
    if (effect_.takesRowsFromTheTop) {
        render(source, destination, number);
        return;
    }
    const auto turn = [this](const std::uint32_t* from, std::uint32_t* to) {
        for (int y = 0; y < height_; ++y) {
            std::copy_n(from + std::int64_t{y} * width_, width_, to + std::int64_t{height_ - 1 - y} * width_);
        }
    };
    turn(source, turnedSource_.data());
    render(turnedSource_.data(), turnedResult_.data(), number);
    turn(turnedResult_.data(), destination);
}

std::int64_t Instance::frameNumber(double time) {
    if (frameRate_ == 0) return updates_++;
    const double number = std::round(time * timeUnit_ * frameRate_);
    // Frames are counted in fields of 32 bits.
    constexpr double last = std::numeric_limits<std::int32_t>::max() / 2;
    return number > 0 ? static_cast<std::int64_t>(std::min(number, last)) : 0;
}

FrameBuffer Instance::bufferOver(const std::uint32_t* pixels) const {
    auto* first = const_cast<std::uint32_t*>(pixels);
    const std::int32_t rowBytes = width_ * 4;
    if (!effect_.takesRowsFromTheTop) return {{0, 0, width_, height_}, rowBytes, 0, first};
    return {{0, 0, width_, height_}, -rowBytes, 0, first + std::int64_t{width_} * (height_ - 1)};
}

std::int32_t Instance::earlierFrame(std::uint32_t time, FrameBuffer* target, const FrameRect* bounds,
                                    void* self) {
    const auto& instance = *static_cast<const Instance*>(self);
    const std::uint32_t* pixels = instance.ring_.nearest(time / 2);
    if (pixels == nullptr) return 0;
    FrameBuffer frame = instance.bufferOver(pixels);
    vpixCopy(&frame, target, &frame.bounds, bounds, VPixCopyReplace);
    return 0;
}

void Instance::render(const std::uint32_t* source, std::uint32_t* destination, std::int64_t number) {
    ring_.store(number, source);
    FrameBuffer sourceBuffer = bufferOver(source);
    FrameBuffer destinationBuffer = bufferOver(destination);
    filter_.render({.source = &sourceBuffer,
                    .destination = &destinationBuffer,
                    .time = static_cast<std::uint32_t>(2 * number),
                    .duration = static_cast<std::uint32_t>(2 * clipLength_),
                    .getFrame = earlierFrame,
                    .getFrameData = this});
}

}  // namespace frei0r
