// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_HOSTING_FILTER_TRAITS_TABLE_H
#define VIREO_HOST_HOSTING_FILTER_TRAITS_TABLE_H

#include "host/hosting/filter_traits.h"

namespace hosting {

/// Written by resources/generate.py, in the order of ids.
extern const std::span<const FilterTraits> knownFilters;

}  // namespace hosting

#endif
