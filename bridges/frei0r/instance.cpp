// SPDX-License-Identifier: GPL-2.0-or-later
#include "bridges/frei0r/instance.h"

#include "host/hosting/parameter_value.h"
#include "host/vireo_host.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace frei0r {
namespace {

/// Rows of more pixels have more bytes than their 32 bits count.
constexpr unsigned largestSide = std::numeric_limits<std::int32_t>::max() / 4;

/// Frames are counted in fields of 32 bits, whose differences filters take as signed.
constexpr double lastFrame = std::numeric_limits<std::int32_t>::max() / 2;

/// The effect, once it is known to render frames of this size. Throws std::length_error.
std::shared_ptr<const Effect> fitFor(unsigned width, unsigned height, std::shared_ptr<const Effect> effect) {
    for (const unsigned side : {width, height}) {
        if (side == 0 || side > largestSide) {
            throw std::length_error("a frame's side of " + std::to_string(side) + " pixels is outside 1 to " +
                                    std::to_string(largestSide));
        }
    }
    const std::string refusal =
        hosting::frameRefusal(effect->filter->properties.name, effect->traits->limits,
                              static_cast<int>(width), static_cast<int>(height), std::int64_t{4} * width);
    if (!refusal.empty()) throw std::length_error(refusal);
    return effect;
}

/// The frame itself and those before it, for filters that ask for any.
std::size_t ringSize(const hosting::FilterTraits& traits) {
    return traits.earlierFrames == 0 ? 0 : static_cast<std::size_t>(traits.earlierFrames) + 1;
}

std::int64_t roundedHalfUp(double value) { return static_cast<std::int64_t>(std::floor(value + 0.5)); }

std::int64_t channelByte(float channel) { return roundedHalfUp(std::clamp(channel, 0.0F, 1.0F) * 255.0); }

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

/// A whole number of frames whose fields can be counted in 32 bits.
std::optional<double> frameCount(std::string_view text) {
    const auto number = positiveNumber(text);
    return number && *number == std::floor(*number) && *number <= lastFrame ? number : std::nullopt;
}

std::optional<double> secondsOfUnit(std::string_view text) {
    if (text == "s" || text == "seconds") return 1;
    if (text == "ms" || text == "milliseconds") return 0.001;
    return positiveRatio(text);
}

}  // namespace

Instance::Instance(std::shared_ptr<const Effect> effect, unsigned width, unsigned height)
    : effect_(fitFor(width, height, std::move(effect))),
      width_(static_cast<int>(width)),
      height_(static_cast<int>(height)),
      turnsRows_(!effect_->traits->takesRowsFromTheTop),
      filter_(hosting::newInstance(*effect_->filter)),
      ring_(ringSize(*effect_->traits), std::size_t{width} * height) {
    if (turnsRows_) {
        turnedSource_.resize(std::size_t{width} * height);
        turnedResult_.resize(std::size_t{width} * height);
    }
    timeTexts_[static_cast<int>(TimeParameter::TimeUnit)] = "s";
}

bool Instance::hasTimeParameter(int number) const {
    return effect_->traits->readsTime && number < timeParameterCount;
}

void Instance::setParameter(int index, f0r_param_t value) {
    const std::lock_guard lock(mutex_);
    const auto& parameters = effect_->filter->properties.parameters;
    const int listed = static_cast<int>(parameters.size());
    if (index < 0) return;
    if (index < listed) {
        setListed(parameters[static_cast<std::size_t>(index)], value);
    } else if (hasTimeParameter(index - listed)) {
        const char* const text = *static_cast<const f0r_param_string*>(value);
        if (text != nullptr) setTime(static_cast<TimeParameter>(index - listed), text);
    }
}

void Instance::setListed(const hosting::Parameter& parameter, f0r_param_t value) {
    if (parameter.kind == hosting::ParameterKind::Color) {
        const auto& color = *static_cast<const f0r_param_color*>(value);
        if (std::isnan(color.r) || std::isnan(color.g) || std::isnan(color.b)) return;
        writeValue(parameter, channelByte(color.r) | channelByte(color.g) << 8 | channelByte(color.b) << 16,
                   filter_.settings());
        return;
    }
    const double number = *static_cast<const double*>(value);
    if (std::isnan(number)) return;
    if (parameter.kind == hosting::ParameterKind::Boolean) {
        writeValue(parameter, number >= 0.5 ? 1 : 0, filter_.settings());
    } else {
        const double range = parameter.maximum - parameter.minimum;
        writeValue(parameter, roundedHalfUp(parameter.minimum + std::clamp(number, 0.0, 1.0) * range),
                   filter_.settings());
    }
}

void Instance::setTime(TimeParameter parameter, const char* text) {
    std::optional<double> number;
    switch (parameter) {
        case TimeParameter::FrameRate:
            number = *text == '\0' ? 0 : positiveRatio(text);
            if (number) frameRate_ = *number;
            break;
        case TimeParameter::TimeUnit:
            number = secondsOfUnit(text);
            if (number) timeUnit_ = *number;
            break;
        case TimeParameter::ClipLength:
            number = *text == '\0' ? 0 : frameCount(text);
            if (number) clipLength_ = static_cast<std::int64_t>(*number);
            break;
    }
    if (number) timeTexts_[static_cast<int>(parameter)] = text;
}

void Instance::getParameter(int index, f0r_param_t value) {
    const std::lock_guard lock(mutex_);
    const auto& parameters = effect_->filter->properties.parameters;
    const int listed = static_cast<int>(parameters.size());
    if (index < 0) return;
    if (index >= listed) {
        if (!hasTimeParameter(index - listed)) return;
        *static_cast<f0r_param_string*>(value) = timeTexts_[index - listed].data();
        return;
    }
    const hosting::Parameter& parameter = parameters[static_cast<std::size_t>(index)];
    const std::int64_t stored = readValue(parameter, filter_.settings());
    const auto channel = [stored](int shift) { return static_cast<float>(stored >> shift & 0xFF) / 255; };
    switch (parameter.kind) {
        case hosting::ParameterKind::Boolean: *static_cast<double*>(value) = stored != 0 ? 1 : 0; break;
        case hosting::ParameterKind::Number: {
            const double range = parameter.maximum - parameter.minimum;
            *static_cast<double*>(value) =
                range > 0 ? (static_cast<double>(stored) - parameter.minimum) / range : 0;
            break;
        }
        case hosting::ParameterKind::Color:
            *static_cast<f0r_param_color*>(value) = {channel(0), channel(8), channel(16)};
            break;
    }
}

void Instance::update(double time, const std::uint32_t* source, std::uint32_t* destination) {
    const std::lock_guard lock(mutex_);
    try {
        renderTopDown(source, destination, frameNumber(time));
    } catch (...) {
        std::copy_n(source, std::int64_t{width_} * height_, destination);
        if (std::exchange(failed_, true)) return;
        throw;
    }
}

void Instance::renderTopDown(const std::uint32_t* source, std::uint32_t* destination, std::int64_t number) {
    if (!turnsRows_) {
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
    return number > 0 ? static_cast<std::int64_t>(std::min(number, lastFrame)) : 0;
}

FrameBuffer Instance::bufferOver(const std::uint32_t* pixels) const {
    auto* first = const_cast<std::uint32_t*>(pixels);
    const std::int32_t rowBytes = width_ * 4;
    if (turnsRows_) return {{0, 0, width_, height_}, rowBytes, 0, first};
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
