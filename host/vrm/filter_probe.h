// SPDX-License-Identifier: MIT
// What a host has to know of a filter and no property list tells.
#ifndef VIREO_HOST_VRM_FILTER_PROBE_H
#define VIREO_HOST_VRM_FILTER_PROBE_H

#include "host/host_export.h"
#include "host/vrm/filter_instance.h"
#include "host/vrm/meta_plugin.h"

namespace VRM {

/// The filter with the settings that it starts with, whose record holds every parameter. Throws
/// std::bad_alloc.
VIREO_HOST_API FilterInstance newInstance(const Filter& filter);

/// Whether the filter's picture changes with the frame's number or the clip's length.
VIREO_HOST_API bool readsTime(const PropertyList& properties);

/// How many frames back the filter asks its host for. It renders a tiny frame far inside a long clip.
VIREO_HOST_API int lookBack(const FilterInstance& instance);

}  // namespace VRM

#endif
