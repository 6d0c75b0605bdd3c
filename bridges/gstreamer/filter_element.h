// SPDX-License-Identifier: MIT
// One element a filter, named after it: vireosolarize, vireolensdistortion.
#ifndef VIREO_BRIDGES_GSTREAMER_FILTER_ELEMENT_H
#define VIREO_BRIDGES_GSTREAMER_FILTER_ELEMENT_H

#include <gst/gst.h>

namespace vireo::gstreamer {

bool registerFilterElements(GstPlugin* plugin);

}  // namespace vireo::gstreamer

#endif
