// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_VRM_FILTER_TRAITS_TABLE_H
#define VIREO_HOST_VRM_FILTER_TRAITS_TABLE_H

#include "host/vrm/filter_traits.h"

namespace VRM {

/// Written by resources/generate.py, in the order of ids.
extern const std::span<const FilterTraits> knownFilters;

}  // namespace VRM

#endif
