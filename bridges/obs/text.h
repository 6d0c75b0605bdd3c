// SPDX-License-Identifier: GPL-2.0-or-later
#ifndef VIREO_OBS_TEXT_H
#define VIREO_OBS_TEXT_H

#include <string>
#include <string_view>

namespace vireo::obs {

/// A text with a place such as "{filter}" filled in.
inline std::string filledIn(std::string text, std::string_view place, std::string_view value) {
    const std::size_t begin = text.find(place);
    return begin == std::string::npos ? text : text.replace(begin, place.size(), value);
}

}  // namespace vireo::obs

#endif
