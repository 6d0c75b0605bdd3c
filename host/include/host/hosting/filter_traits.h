// SPDX-License-Identifier: MIT
// What a host has to know of a filter and no property list tells: resources/filters.toml declares it.
#ifndef VIREO_HOST_HOSTING_FILTER_TRAITS_H
#define VIREO_HOST_HOSTING_FILTER_TRAITS_H

#include "host/host_export.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace hosting {

/// The largest frame, or field of one, that a filter renders right whatever its settings are. Some filters
/// keep sizes in 16 bits, as old projects know them, and give a wrong picture beyond without a word.
struct FrameLimits {
    static constexpr std::int32_t none = std::numeric_limits<std::int32_t>::max();

    std::int32_t width = none;     ///< Pixels.
    std::int32_t height = none;    ///< Pixels.
    std::int32_t rowBytes = none;  ///< From one row to the next, without the sign.
};

/// How people read a parameter.
struct ParameterTraits {
    std::string_view unit;  ///< Of the display range: "%", "px" or the degree sign in UTF-8; or empty.
    std::string_view
        labelKey;  ///< What the localiser takes; the property list's key unless that says little.
    /// Of a number that stands for one of a few words: their keys, that of the smallest number first.
    std::span<const std::string_view> choices;
    bool inPixels = false;  ///< The value counts pixels: it goes with a picture that is made smaller.
};

struct IdentityValue {
    std::size_t parameter;  ///< Index in the property list.
    std::int64_t value;     ///< As the settings record holds it.
};

/// Views of texts and arrays last as long as the library.
struct FilterTraits {
    std::uint32_t id = 0;
    std::string_view matchName;
    std::string_view fileName;  ///< The name as files take it: "black_and_white".
    FrameLimits limits;
    bool readsTime = false;            ///< The picture changes with the frame's number or the clip's length.
    std::int32_t earlierFrames = 0;    ///< So many frames back it asks its host for, at most.
    bool takesRowsFromTheTop = false;  ///< Negative row bytes give the picture that positive ones give.
    /// How many rows at the picture's top may stay as they were although Execute succeeds; null where any
    /// pixel may.
    std::optional<std::int32_t> unwrittenRows;
    /// Where a filter may be rendered in bands, from buffers that are parts of the frame: so many rows of the
    /// source above and below a row decide what becomes of it, and so many rows beside a cut are wrong.
    std::optional<std::int32_t> neighbourRows;
    /// Each pixel's blue, green and red become entries of a table for each, and alpha stays.
    bool mapsChannels = false;
    /// With all these values the result is the source, whatever the others are. Empty where there are none.
    std::span<const IdentityValue> identity;
    bool touchesGaps = false;   ///< Bytes between the rows are read and written, too.
    bool countsPixels = false;  ///< A picture made smaller is not rendered as the large one is.
    std::span<const ParameterTraits> parameters;  ///< In the order of the property list.
};

/// By match name. Of a filter that is not known they say what is safe to assume, without an id, names and
/// parameters: it may read the time and 8 earlier frames, wants whole frames with rows from the bottom, may
/// touch what lies between rows, and has no limits.
VIREO_HOST_API const FilterTraits& filterTraits(std::string_view matchName);

/// Why a filter does not take frames of a size: a sentence without full stop that begins with `filterName`.
/// Empty where it takes them.
VIREO_HOST_API std::string frameRefusal(std::string_view filterName, const FrameLimits& limits,
                                        std::int32_t width, std::int32_t height, std::int64_t rowBytes);

}  // namespace hosting

#endif
