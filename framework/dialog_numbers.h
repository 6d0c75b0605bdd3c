// SPDX-License-Identifier: MIT
#ifndef VIREO_FRAMEWORK_DIALOG_NUMBERS_H
#define VIREO_FRAMEWORK_DIALOG_NUMBERS_H

#include <cstdint>
#include <string>

/// The text of a numeric edit field in the host's locale. With `fixed`, `decimals` digits behind the decimal
/// sign.
std::u16string FormatDialogNumber(double value, bool fixed, std::uint8_t decimals);

#endif
