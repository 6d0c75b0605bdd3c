// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_MTKCORE_UTILITY_H
#define VIREO_HOST_MTKCORE_UTILITY_H

#include "host/host_export.h"

#include <string>
#include <string_view>

namespace mtkcore::utility {

/// Malformed bytes become U+FFFD.
VIREO_HOST_API std::u16string Utf8ToUTF16(std::string_view text);

/// Lone surrogates become U+FFFD.
VIREO_HOST_API std::string UTF16ToUtf8(std::u16string_view text);

/// From the platform's wide characters, of 16 or 32 bits.
VIREO_HOST_API std::u16string WcharToUTF16(std::wstring_view text);

/// The number with exactly `decimals` digits behind the decimal sign of the host's language, halves away from
/// zero, without grouping. The style, the flags and the last value are accepted and have no effect.
VIREO_HOST_API std::u16string NumberToString(double value, int style, int decimals, int flags, int options);

}  // namespace mtkcore::utility

#endif
