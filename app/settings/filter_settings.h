// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_SETTINGS_FILTER_SETTINGS_H
#define VIREO_APP_SETTINGS_FILTER_SETTINGS_H

#include "app/settings/catalogue.h"
#include "app/settings/clip_time.h"
#include "app/settings/value_track.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vireo {

/// One filter of a chain with everything that was said about it.
class FilterSettings {
public:
    /// A parameter that was given a value.
    struct Assignment {
        std::size_t parameter;
        ValueTrack value;
    };

    /// The filter as its InitSettings makes it. The filter outlives the settings.
    explicit FilterSettings(const VRM::Filter& filter);

    const VRM::Filter& filter() const { return *filter_; }

    /// What was given, in the order in which it was.
    const std::vector<Assignment>& assignments() const { return assignments_; }
    const std::optional<ClipTime>& from() const { return from_; }
    const std::optional<ClipTime>& to() const { return to_; }
    const std::optional<ValueTrack>& mix() const { return mix_; }

    /// Whether a name is one of the words from, to and mix, which a parameter of the filter would go before.
    bool isWord(std::string_view name) const;

    /// Gives a parameter, or one of the words from, to and mix, its value. Throws RenderError of wrong usage,
    /// also where it has one already.
    void assign(std::string_view name, std::string_view value);

    /// Takes over what `other`, of the same filter, was given; what both were given is the other's.
    void assignAll(const FilterSettings& other);

    /// Takes the handle's bytes: all of them, or those of the parameters. Throws RenderError. What was
    /// assigned still counts over them.
    void setBytes(std::span<const std::uint8_t> bytes);

    /// Makes every parameter an assignment, so that settings from bytes can be written by name.
    void assignFromBytes();

    /// Whether anything was given.
    bool isSet() const { return !assignments_.empty() || from_ || to_ || mix_; }

    /// Whether parameters change along the clip.
    bool isAnimated() const;

    /// The bytes of the settings handle for a frame; empty for filters that keep none.
    std::vector<std::uint8_t> record(const FramePosition& position) const;

    /// Whether the filter works on a frame: from its `from`, included, to its `to`, excluded.
    bool covers(const FramePosition& position) const;

    /// Per cent of the filter's result in the picture.
    int mixAt(const FramePosition& position) const;

private:
    std::string ownerName(std::string_view parameter) const;
    bool isAssigned(std::size_t parameter) const;
    void assign(std::size_t parameter, ValueTrack value);

    const VRM::Filter* filter_;
    std::vector<std::uint8_t> bytes_;
    std::vector<Names> parameterNames_;
    std::vector<Names> parameterTranslations_;  ///< In the host's language.
    std::vector<Assignment> assignments_;
    std::optional<ClipTime> from_, to_;
    std::optional<ValueTrack> mix_;
};

/// Reads "NAME:parameter=value,parameter=value". Throws RenderError of wrong usage.
FilterSettings parseFilterText(const Catalogue& catalogue, std::string_view text);

}  // namespace vireo

#endif
