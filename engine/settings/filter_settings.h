// SPDX-License-Identifier: MIT
#ifndef VIREO_ENGINE_SETTINGS_FILTER_SETTINGS_H
#define VIREO_ENGINE_SETTINGS_FILTER_SETTINGS_H

#include "engine/catalogue/catalogue.h"
#include "engine/settings/clip_time.h"
#include "engine/settings/value_track.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vireo {

/// What of a filter can be given a value: a parameter by its index, or one of the words that every filter
/// knows.
using ValueIndex = int;
inline constexpr ValueIndex fromWord = -1;
inline constexpr ValueIndex toWord = -2;
inline constexpr ValueIndex mixWord = -3;

/// How a filter's settings are written for -f.
enum class Spelling {
    Full,     ///< "Black & White:mix=50%".
    Compact,  ///< Without what addresses would escape: "BlackAndWhite:mix=50".
};

/// One filter of a chain with everything that was said about it.
class FilterSettings {
public:
    /// A parameter that was given a value.
    struct Assignment {
        std::size_t parameter;
        ValueTrack value;
    };

    /// The filter as its InitSettings makes it. The filter outlives the settings. Parameters go by their
    /// English names and by those of the language.
    explicit FilterSettings(const hosting::Filter& filter, std::uint16_t language = QRB::GetLanguageID());

    const hosting::Filter& filter() const { return *filter_; }

    /// What was given, in the order in which it was.
    const std::vector<Assignment>& assignments() const { return assignments_; }
    const std::optional<ClipTime>& from() const { return from_; }
    const std::optional<ClipTime>& to() const { return to_; }
    const std::optional<ValueTrack>& mix() const { return mix_; }

    /// Whether a name is one of the words from, to and mix, which a parameter of the filter would go before.
    bool isWord(std::string_view name) const;

    /// What goes by a name or by the unambiguous beginning of one. Throws Error.
    ValueIndex find(std::string_view name) const;

    /// Gives what goes by a name its value. Throws Error, also where it has one already.
    void assign(std::string_view name, std::string_view value);

    /// Gives a parameter or word its value, in place of one that it has. Throws Error.
    void set(ValueIndex index, std::string_view value);

    /// The same with a value that is not text. Throws Error where the parameter does not take it, and for
    /// the words from and to.
    void set(ValueIndex index, ValueTrack value);

    /// Takes the value of a parameter or word away again.
    void unset(ValueIndex index);

    /// Whether a parameter or word was given a value.
    bool isSet(ValueIndex index) const;

    /// The value as -f takes it; where none was given the one that holds then, empty for from and to.
    std::string text(ValueIndex index) const;

    /// The value of a parameter or of mix; where none was given the one that holds then. Throws Error for
    /// from and to.
    ValueTrack value(ValueIndex index) const;

    /// Takes over what `other`, of the same filter, was given; what both were given is the other's.
    void assignAll(const FilterSettings& other);

    /// Takes the handle's bytes: all of them, or those of the parameters. Throws Error. What was assigned
    /// still counts over them.
    void setBytes(std::span<const std::uint8_t> bytes);

    /// Whether bytes were taken.
    bool hasBytes() const { return hasBytes_; }

    /// Makes every parameter an assignment, so that settings from bytes can be written by name. Throws Error.
    void assignFromBytes();

    /// Whether anything was given.
    bool isSet() const { return !assignments_.empty() || from_ || to_ || mix_; }

    /// Whether parameters change along the clip.
    bool isAnimated() const;

    /// Whether the result depends on the frame's place in the clip through what was given.
    bool isTimed() const { return isAnimated() || from_ || to_ || (mix_ && !mix_->isConstant()); }

    /// The bytes of the settings handle for a frame; empty for filters that keep none.
    std::vector<std::uint8_t> record(const FramePosition& position) const;

    /// Whether the filter works on a frame: from its `from`, included, to its `to`, excluded.
    bool covers(const FramePosition& position) const;

    /// Per cent of the filter's result in the picture.
    int mixAt(const FramePosition& position) const;

private:
    const hosting::Parameter& parameterAt(ValueIndex index) const;
    std::string ownerName(std::string_view parameter) const;
    std::string_view nameOf(ValueIndex index) const;
    const Assignment* assignment(std::size_t parameter) const;

    const hosting::Filter* filter_;
    std::vector<std::uint8_t> bytes_;
    bool hasBytes_ = false;
    std::vector<Names> parameterNames_;
    std::vector<Names> parameterTranslations_;
    std::vector<Assignment> assignments_;
    std::optional<ClipTime> from_, to_;
    std::optional<ValueTrack> mix_;
};

/// Reads "NAME:parameter=value,parameter=value". Throws Error.
FilterSettings parseFilterText(const Catalogue& catalogue, std::string_view text);

/// Reads such texts with ";" or line ends between them; empty ones do not count. Throws Error.
std::vector<FilterSettings> parseChainText(const Catalogue& catalogue, std::string_view text);

/// The text that reads as these settings.
std::string filterText(const FilterSettings& settings, Spelling spelling);

}  // namespace vireo

#endif
