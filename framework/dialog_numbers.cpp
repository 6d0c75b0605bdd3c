// SPDX-License-Identifier: MIT
#include "framework/dialog_numbers.h"

#include "host/mtkcore/utility.h"
#include "host/qrb/locale.h"

#include <ios>
#include <sstream>

std::u16string FormatDialogNumber(double value, bool fixed, std::uint8_t decimals) {
    if (fixed && decimals != 0) return mtkcore::utility::NumberToString(value, 1, decimals, 0, 31);
    std::wostringstream stream;
    stream.imbue(QRB::Locale::Native());
    if (fixed) {
        stream.setf(std::ios_base::fixed, std::ios_base::floatfield);
        stream.precision(decimals);
    }
    stream << value;
    return mtkcore::utility::WcharToUTF16(stream.str());
}
