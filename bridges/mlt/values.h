// SPDX-License-Identifier: MIT
// A filter's properties at a moment, as its chain takes them.
#ifndef VIREO_MLT_VALUES_H
#define VIREO_MLT_VALUES_H

#include "bridges/mlt/engine.h"

#include <framework/mlt.h>

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

/// Gives the only filter of a chain the value that a property has then.
void setValue(VireoChain* chain, const Parameter& parameter, mlt_properties properties, const Moment& moment);

}  // namespace vireo::mlt

#endif
