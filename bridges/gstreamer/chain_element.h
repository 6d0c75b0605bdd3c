// SPDX-License-Identifier: MIT
// vireo: a chain, as text, as a preset or from a file.
#ifndef VIREO_BRIDGES_GSTREAMER_CHAIN_ELEMENT_H
#define VIREO_BRIDGES_GSTREAMER_CHAIN_ELEMENT_H

#include <gst/gst.h>

namespace vireo::gstreamer {

bool registerChainElement(GstPlugin* plugin);

}  // namespace vireo::gstreamer

#endif
