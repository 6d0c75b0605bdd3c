// SPDX-License-Identifier: MIT
// A filter's properties at a moment, as its chain takes them.
#ifndef VIREO_MLT_VALUES_H
#define VIREO_MLT_VALUES_H

#include "bridges/mlt/engine.h"

#include <framework/mlt.h>

#include <optional>
#include <string>
#include <vector>

namespace vireo::mlt {

struct Parameter {
    std::string name;
    std::int32_t index;  ///< The engine's, VireoMix among them.
    VireoKind kind;
    double minimum;
    double maximum;
    std::vector<std::string> choices;  ///< Words for the values from `minimum` on.
    std::string initial;               ///< As the property has it.
};

/// All parameters of a filter, and the mix.
std::vector<Parameter> parametersOf(const VireoEngine* engine, std::uint32_t filter);

/// Where a frame stands between the begin and the end of an MLT filter, which animations count from.
struct Moment {
    int position;
    int length;
};

/// What a property has then: a number as the engine stores it, or a text that the engine reads.
struct Value {
    std::optional<std::int64_t> number;
    std::string text;

    bool operator==(const Value&) const = default;
};

Value valueAt(const Parameter& parameter, mlt_properties properties, const Moment& moment);

/// Gives the only filter of a chain a value.
void setValue(VireoChain* chain, const Parameter& parameter, const Value& value);

}  // namespace vireo::mlt

#endif
