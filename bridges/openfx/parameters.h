// SPDX-License-Identifier: MIT
// How a parameter of the engine is one of the host's.
#ifndef VIREO_BRIDGES_OPENFX_PARAMETERS_H
#define VIREO_BRIDGES_OPENFX_PARAMETERS_H

#include "bridges/openfx/catalogue.h"
#include "bridges/openfx/host.h"

#include <cstdint>

namespace openfx {

enum class ParameterKind { Integer, Boolean, Choice, Color };

ParameterKind kindOf(const Parameter& parameter);
const char* typeOf(ParameterKind kind);

/// The host's value at a time as the engine stores it; the initial one where the host has none.
std::int64_t valueAt(const Host& host, OfxParamHandle handle, const Parameter& parameter, OfxTime time);

}  // namespace openfx

#endif
