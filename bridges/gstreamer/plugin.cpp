// SPDX-License-Identifier: MIT
#include "bridges/gstreamer/elements.h"
#include "bridges/gstreamer/engine.h"

GST_DEBUG_CATEGORY(vireo_debug);

namespace {

using namespace vireo::gstreamer;

gboolean initPlugin(GstPlugin* plugin) {
    GST_DEBUG_CATEGORY_INIT(vireo_debug, "vireo", 0, "Vireo filters");
    // What the registry remembers of this plug-in hangs on where the module is.
    gst_plugin_add_dependency_simple(plugin, "VIREO_MODULE", nullptr, nullptr,
                                     GST_PLUGIN_DEPENDENCY_FLAG_NONE);
    if (!openEngine()) {
        g_warning("vireo: %s", vireoLastError()->sentence);
        return FALSE;
    }
    return registerChainElement(plugin) && registerFilterElements(plugin) ? TRUE : FALSE;
}

}  // namespace

// What the macro needs, by the names that it wants.
#define PACKAGE "vireo"
GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, vireo, "The Vireo filters, one by one and as chains",
                  initPlugin, VIREO_VERSION, "MIT/X11", "Vireo Filters", "https://vireo.invalid")
