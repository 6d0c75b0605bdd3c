// SPDX-License-Identifier: MIT
#include "host/vrm/frame_limits.h"

#include <algorithm>
#include <iterator>

namespace VRM {
namespace {

struct LimitedFilter {
    std::string_view matchName;
    FrameLimits limits;
};

constexpr std::int32_t signed16 = std::numeric_limits<std::int16_t>::max();

constexpr LimitedFilter limitedFilters[] = {
    // Rows are stepped by 16 bits of pixels.
    {"QULN Antialias", {.width = signed16, .height = signed16, .rowBytes = 4 * signed16 + 3}},
    // A period of 90 % of the frame has 16 bits.
    {"QULN Bend", {.width = 36408, .height = 36408}},
    {"QULN Color Replace", {.height = signed16, .rowBytes = signed16}},
    // The shift has 16 bits of bytes; that of a whole row, which is the first to overflow, counts as none.
    {"QULN Horizontal Hold", {.width = 8192}},
    // Places are 16.16.
    {"QULN Lens Distortion", {.width = 32768, .height = 32768}},
    {"QULN Replicate", {.width = signed16, .height = signed16}},
    {"QULN Vertical Flip", {.height = signed16, .rowBytes = signed16}},
    // The shift has 16 bits; that of 32768 rows moves nothing, as it should.
    {"QULN Vertical Hold", {.height = 32768}},
};

std::string tooLarge(std::string_view filterName, std::int32_t most, const char* direction,
                     std::int32_t size) {
    return std::string(filterName) + " takes frames up to " + std::to_string(most) + " pixels " + direction +
           ", not " + std::to_string(size);
}

}  // namespace

FrameLimits frameLimits(std::string_view matchName) {
    const auto* const found =
        std::find_if(std::begin(limitedFilters), std::end(limitedFilters),
                     [&](const LimitedFilter& filter) { return filter.matchName == matchName; });
    return found == std::end(limitedFilters) ? FrameLimits{} : found->limits;
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

}  // namespace VRM
