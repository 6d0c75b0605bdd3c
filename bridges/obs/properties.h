// SPDX-License-Identifier: GPL-2.0-or-later
// What OBS shows of a filter.
#ifndef VIREO_OBS_PROPERTIES_H
#define VIREO_OBS_PROPERTIES_H

#include <obs-module.h>

namespace vireo::obs {

class Filter;

/// Made anew whenever the list of filters changes.
obs_properties_t* makeProperties(Filter& filter);

}  // namespace vireo::obs

#endif
