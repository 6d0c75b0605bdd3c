// SPDX-License-Identifier: MIT
// The filters in the order in which hosts count them: the one line that a new filter adds here.
#ifndef VIREO_FRAMEWORK_REGISTRATION_ORDER_H
#define VIREO_FRAMEWORK_REGISTRATION_ORDER_H

#include "framework/registry.h"

/// F(id, namespace of the filter)
#define VIREO_FILTERS_FOR_ALL(F) F(10049, Solarize)

/// Only applications of type 5 or 8 get these.
#define VIREO_FILTERS_FOR_FULL_APPLICATIONS(F)

#define VIREO_DECLARE_FILTER(id, filter)                         \
    namespace filter {                                           \
    void Register(VSK::PluginRegistry& registry, std::uint32_t); \
    }
VIREO_FILTERS_FOR_ALL(VIREO_DECLARE_FILTER)
VIREO_FILTERS_FOR_FULL_APPLICATIONS(VIREO_DECLARE_FILTER)
#undef VIREO_DECLARE_FILTER

#endif
