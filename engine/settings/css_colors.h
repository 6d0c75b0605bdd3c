// SPDX-License-Identifier: MIT
#ifndef VIREO_ENGINE_SETTINGS_CSS_COLORS_H
#define VIREO_ENGINE_SETTINGS_CSS_COLORS_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace vireo {

/// The colour of a CSS name in small letters, 0xRRGGBB.
std::optional<std::uint32_t> cssColor(std::string_view name);

}  // namespace vireo

#endif
