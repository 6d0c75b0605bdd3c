// SPDX-License-Identifier: MIT
// The properties that the interface knows, by its documentation.
#ifndef VIREO_TESTS_BRIDGES_OPENFX_HOST_STANDARD_H
#define VIREO_TESTS_BRIDGES_OPENFX_HOST_STANDARD_H

#include <set>
#include <string>

namespace openfx::test {

enum class PropertyType { Pointer, String, Double, Int };

struct StandardProperty {
    PropertyType type;
    int dimension;                ///< 0: any.
    std::set<std::string> of;     ///< The objects on which a plug-in may set it.
    std::set<std::string> words;  ///< What a text may be; empty: anything.
};

/// Null where the interface has no such property.
const StandardProperty* standardProperty(const std::string& name);

}  // namespace openfx::test

#endif
