// SPDX-License-Identifier: GPL-2.0-or-later
#ifndef VIREO_BRIDGES_FREI0R_MODULE_H
#define VIREO_BRIDGES_FREI0R_MODULE_H

#include "host/hosting/filter_traits.h"
#include "host/hosting/meta_plugin.h"

#include <cstdint>
#include <memory>

namespace frei0r {

/// A filter as the plug-in's host sees it.
struct Effect {
    std::shared_ptr<const hosting::MetaPlugin> module;
    const hosting::Filter* filter;
    const hosting::FilterTraits* traits;
};

/// Loads the module, which lies beside the plug-ins' library, and finds the filter. Throws std::exception.
Effect loadEffect(std::uint32_t filterId);

}  // namespace frei0r

#endif
