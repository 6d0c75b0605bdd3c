// SPDX-License-Identifier: MIT
#include "app/commands/exported_chain.h"

#include "engine/error.h"
#include "engine/settings/parameter_value.h"
#include "engine/text.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace vireo {
namespace {

constexpr std::int64_t farAway = std::numeric_limits<std::int32_t>::max();

StoredValues storedValues(const std::vector<hosting::Parameter>& parameters,
                          const std::vector<std::uint8_t>& record) {
    StoredValues values;
    for (const hosting::Parameter& parameter : parameters) values.push_back(readValue(parameter, record));
    return values;
}

}  // namespace

double ExportedClip::rate() const {
    return static_cast<double>(facts_.frameRate.numerator) / facts_.frameRate.denominator;
}

std::string ExportedClip::rateText() const {
    const std::string numerator = std::to_string(facts_.frameRate.numerator);
    return facts_.frameRate.denominator == 1 ? numerator
                                             : numerator + '/' + std::to_string(facts_.frameRate.denominator);
}

FramePosition ExportedClip::position(std::int64_t frame) const {
    const double rate = hasRate() ? this->rate() : 1;
    const auto index = static_cast<std::size_t>(frame);
    return {frame, facts_.frameCount,
            index < facts_.seconds.size() ? facts_.seconds[index] : static_cast<double>(frame) / rate, rate,
            Interlacing::Progressive};
}

std::int64_t ExportedClip::firstAt(const ClipTime& time) const {
    std::int64_t first = 0;
    std::int64_t end = facts_.frameCount > 0 ? facts_.frameCount : farAway;
    while (first < end) {
        const std::int64_t middle = first + (end - first) / 2;
        if (time.reachedBy(position(middle))) {
            end = middle;
        } else {
            first = middle + 1;
        }
    }
    return first;
}

ExportedFilter::ExportedFilter(const FilterSettings& settings, const ExportedClip& clip)
    : settings_(settings), clip_(clip), traits_(traitsOf(settings.filter())) {
    if (settings_.from()) first_ = clip_.firstAt(*settings_.from());
    if (settings_.to()) last_ = std::max(first_, clip_.firstAt(*settings_.to()));
    const auto settle = [this](const ValueTrack& track) {
        if (!track.isConstant()) settled_ = std::max(settled_, clip_.firstAt(track.keys().back().time));
    };
    for (const FilterSettings::Assignment& assignment : settings_.assignments()) settle(assignment.value);
    if (settings_.mix()) settle(*settings_.mix());
}

StoredValues ExportedFilter::valuesAt(std::int64_t frame) const {
    return storedValues(parameters(), settings_.record(clip_.position(frame)));
}

StoredValues ExportedFilter::initialValues() const {
    return storedValues(parameters(), FilterSettings(settings_.filter()).record({}));
}

std::vector<ExportedFilter> exportedFilters(const std::vector<FilterSettings>& chain,
                                            const ExportedClip& clip) {
    std::vector<ExportedFilter> filters;
    for (const FilterSettings& settings : chain) {
        if (settings.isTimed() && !clip.hasRate())
            throw Error(Fault::Usage,
                        settings.filter().properties.name +
                            " changes along the clip; give the clip, or its rate by --frame-rate");
        filters.emplace_back(settings, clip);
    }
    return filters;
}

double shareOf(const hosting::Parameter& parameter, double value) {
    const double range = parameter.maximum - parameter.minimum;
    return range > 0 ? (value - parameter.minimum) / range : 0;
}

std::string shareText(const hosting::Parameter& parameter, std::int64_t value) {
    // Hosts round and cut in ways of their own: closer to the whole number than any of them looks.
    constexpr double closeness = 1e-3;
    constexpr int mostDigits = std::numeric_limits<double>::max_digits10;
    char text[32];
    for (int digits = 0; digits <= mostDigits; ++digits) {
        std::snprintf(text, sizeof text, "%.*f", digits, shareOf(parameter, static_cast<double>(value)));
        const double range = parameter.maximum - parameter.minimum;
        const double back = parameter.minimum + parseDecimal(text).value_or(-1) * range;
        if (std::abs(back - static_cast<double>(value)) < closeness) break;
    }
    return text;
}

}  // namespace vireo
