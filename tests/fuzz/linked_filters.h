// SPDX-License-Identifier: MIT
#ifndef VIREO_TESTS_FUZZ_LINKED_FILTERS_H
#define VIREO_TESTS_FUZZ_LINKED_FILTERS_H

#include "host/hosting/meta_plugin.h"

#include <vector>

/// The filters of the module, which is linked into the program.
const std::vector<hosting::Filter>& linkedFilters();

#endif
