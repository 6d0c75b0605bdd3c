// SPDX-License-Identifier: MIT
// What the plug-in registers.
#ifndef VIREO_BRIDGES_GSTREAMER_ELEMENTS_H
#define VIREO_BRIDGES_GSTREAMER_ELEMENTS_H

#include <gst/gst.h>

namespace vireo::gstreamer {

/// vireo: a chain, as text, as a preset or from a file.
bool registerChainElement(GstPlugin* plugin);

/// One element a filter, named after it: vireosolarize, vireolensdistortion.
bool registerFilterElements(GstPlugin* plugin);

}  // namespace vireo::gstreamer

#endif
