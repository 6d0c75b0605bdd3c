// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_QRB_LOCALE_H
#define VIREO_HOST_QRB_LOCALE_H

#include "host/host_export.h"

#include <locale>
#include <string_view>

namespace QRB {

/// How the host's language writes numbers.
struct VIREO_HOST_API Locale {
    static char16_t DecimalSign();

    /// For streams: the decimal sign of the language, no grouping.
    static std::locale Native();

    /// Reads a number as a user types it: blanks around it, an optional sign, digits with the language's
    /// decimal sign or a full stop among them. No grouping and no exponent. False, with `value` left alone,
    /// for any other text.
    static bool GetValueFromDisplayString(std::u16string_view text, double* value);
};

}  // namespace QRB

#endif
