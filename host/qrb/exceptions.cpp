// SPDX-License-Identifier: MIT
#include "host/qrb/exceptions.h"

namespace QRB {

Exception::~Exception() = default;
SuiteCallFailed::~SuiteCallFailed() = default;

const char* SuiteCallFailed::what() const noexcept { return "Suite call failed"; }

}  // namespace QRB
