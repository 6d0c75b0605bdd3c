// SPDX-License-Identifier: MIT
#include "host/hosting/filter_traits.h"

#include "host/hosting/filter_traits_table.h"

#include <algorithm>

namespace hosting {
namespace {

/// Gets as many earlier frames as any that is known asks for.
constexpr FilterTraits unknownFilter{.readsTime = true, .earlierFrames = 8, .touchesGaps = true};

std::string tooLarge(std::string_view filterName, std::int32_t most, const char* direction,
                     std::int32_t size) {
    return std::string(filterName) + " takes frames up to " + std::to_string(most) + " pixels " + direction +
           ", not " + std::to_string(size);
}

}  // namespace

const FilterTraits& filterTraits(std::string_view matchName) {
    // The browser's standard library has no std::ranges::find yet.
    const auto found =
        std::find_if(knownFilters.begin(), knownFilters.end(),
                     [&](const FilterTraits& traits) { return traits.matchName == matchName; });
    return found == knownFilters.end() ? unknownFilter : *found;
}

std::string frameRefusal(std::string_view filterName, const FrameLimits& limits, std::int32_t width,
                         std::int32_t height, std::int64_t rowBytes) {
    if (width > limits.width) return tooLarge(filterName, limits.width, "wide", width);
    if (height > limits.height) return tooLarge(filterName, limits.height, "high", height);
    const std::int64_t bytes = rowBytes < 0 ? -rowBytes : rowBytes;
    if (limits.rowBytes == FrameLimits::none || bytes <= limits.rowBytes) return {};
    return std::string(filterName) + " takes rows of up to " + std::to_string(limits.rowBytes) +
           " bytes, and those of " + std::to_string(width) + " pixels have " + std::to_string(bytes);
}

}  // namespace hosting
