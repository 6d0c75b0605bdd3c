// SPDX-License-Identifier: MIT
// A chain on its way to another program, which has the filters as frei0r plug-ins: one value after another,
// frame by frame.
#ifndef VIREO_APP_COMMANDS_EXPORTED_CHAIN_H
#define VIREO_APP_COMMANDS_EXPORTED_CHAIN_H

#include "app/media/clip_facts.h"
#include "engine/settings/filter_settings.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vireo {

/// The clip that a chain is handed on for, as far as it is known.
class ExportedClip {
public:
    /// Of a clip that was looked at, or of which only some facts were given.
    explicit ExportedClip(ClipFacts facts) : facts_(std::move(facts)) {}

    const ClipFacts& facts() const { return facts_; }
    bool hasRate() const { return facts_.frameRate.numerator > 0; }
    double rate() const;

    /// "25" or "30000/1001".
    std::string rateText() const;

    FramePosition position(std::int64_t frame) const;

    /// The first frame at or after a time; frameCount, or a frame far away, where none is.
    std::int64_t firstAt(const ClipTime& time) const;

private:
    ClipFacts facts_;
};

/// A filter's stored values at one frame, in the order of its parameters.
using StoredValues = std::vector<std::int64_t>;

/// One filter of the chain, at the clip's frames.
class ExportedFilter {
public:
    ExportedFilter(const FilterSettings& settings, const ExportedClip& clip);

    const FilterSettings& settings() const { return settings_; }
    const std::string& name() const { return settings_.filter().properties.name; }
    const std::vector<hosting::Parameter>& parameters() const {
        return settings_.filter().properties.parameters;
    }
    const hosting::FilterTraits& traits() const { return traits_; }

    /// "vireo_solarize".
    std::string plugin() const { return "vireo_" + std::string(traits_.fileName); }

    StoredValues valuesAt(std::int64_t frame) const;
    StoredValues initialValues() const;
    int mixAt(std::int64_t frame) const { return settings_.mixAt(clip_.position(frame)); }

    bool isMixed() const { return settings_.mix().has_value(); }
    bool isMixAnimated() const { return isMixed() && !settings_.mix()->isConstant(); }

    /// The frames that it works on: `last` excluded, nothing where it is the clip's end.
    std::int64_t first() const { return first_; }
    const std::optional<std::int64_t>& last() const { return last_; }
    bool isStretch() const { return first_ > 0 || last_; }

    /// From this frame on, no value changes any more.
    std::int64_t settledAt() const { return settled_; }

private:
    FilterSettings settings_;
    const ExportedClip& clip_;
    const hosting::FilterTraits& traits_;
    std::int64_t first_ = 0;
    std::optional<std::int64_t> last_;
    std::int64_t settled_ = 0;
};

/// The filters of a chain. Throws Error of wrong usage where times are given and the clip's rate is not
/// known.
std::vector<ExportedFilter> exportedFilters(const std::vector<FilterSettings>& chain,
                                            const ExportedClip& clip);

/// A frei0r number, 0 to 1, in the fewest digits that bring back the stored value.
std::string shareText(const hosting::Parameter& parameter, std::int64_t value);

/// The share that a stored value is of its range.
double shareOf(const hosting::Parameter& parameter, double value);

}  // namespace vireo

#endif
