// SPDX-License-Identifier: MIT
#include "bridges/openfx/parameters.h"

#include <algorithm>
#include <cmath>

namespace openfx {
namespace {

std::int64_t byteOf(double channel) {
    return channel > 0 ? std::lround(std::min(channel, 1.0) * 255) : 0;  // no number is 0, too
}

}  // namespace

ParameterKind kindOf(const Parameter& parameter) {
    if (parameter.facts.kind == VireoColor) return ParameterKind::Color;
    if (parameter.facts.kind == VireoBoolean) return ParameterKind::Boolean;
    return parameter.choices.empty() ? ParameterKind::Integer : ParameterKind::Choice;
}

const char* typeOf(ParameterKind kind) {
    switch (kind) {
        case ParameterKind::Boolean: return ofx::param::boolean;
        case ParameterKind::Choice: return ofx::param::choice;
        case ParameterKind::Color: return ofx::param::rgb;
        case ParameterKind::Integer: break;
    }
    return ofx::param::integer;
}

std::int64_t valueAt(const Host& host, OfxParamHandle handle, const Parameter& parameter, OfxTime time) {
    const VireoParameter& facts = parameter.facts;
    if (handle == nullptr) return facts.initial;
    const ParameterKind kind = kindOf(parameter);
    const auto& suite = host.parameters();
    if (kind == ParameterKind::Color) {
        double red = 0, green = 0, blue = 0;
        if (suite.paramGetValueAtTime(handle, time, &red, &green, &blue) != ofx::Ok) return facts.initial;
        return byteOf(red) << 16 | byteOf(green) << 8 | byteOf(blue);
    }
    int value = 0;
    if (suite.paramGetValueAtTime(handle, time, &value) != ofx::Ok) return facts.initial;
    if (kind == ParameterKind::Boolean) return value != 0 ? 1 : 0;
    const auto minimum = static_cast<std::int64_t>(facts.minimum);
    const std::int64_t stored = kind == ParameterKind::Choice ? minimum + value : value;
    return std::clamp(stored, minimum, static_cast<std::int64_t>(facts.maximum));
}

}  // namespace openfx
