// SPDX-License-Identifier: MIT
#ifndef VIREO_TESTS_FUZZ_LINKED_FILTERS_H
#define VIREO_TESTS_FUZZ_LINKED_FILTERS_H

#include "host/hosting/meta_plugin.h"

/// The filters of the module, which is linked into the program.
inline const std::vector<hosting::Filter>& linkedFilters() {
    static const hosting::MetaPlugin module("linked");
    return module.filters();
}

#endif
