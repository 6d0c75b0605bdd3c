// SPDX-License-Identifier: MIT
#ifndef VIREO_TESTS_WINDOWS_DIALOG_LANGUAGES_H
#define VIREO_TESTS_WINDOWS_DIALOG_LANGUAGES_H

#include <cstdint>

struct NamedLanguage {
    const char* name;
    std::uint16_t id;
};

/// What the dialogs are translated into, English first.
inline constexpr NamedLanguage dialogLanguages[] = {
    {"en", 0x0409}, {"de", 0x0407}, {"es", 0x040A}, {"fr", 0x040C},
    {"it", 0x0410}, {"ja", 0x0411}, {"ko", 0x0412},
};

struct NamedFilter {
    const char* name;
    std::uint32_t id;
};

inline constexpr NamedFilter dialogFilters[] = {
    {"bend", 10004},    {"camera-blur", 10010},     {"camera-view", 10011},
    {"extract", 10022}, {"horizontal-hold", 10031}, {"levels", 10035},
};

#endif
