// SPDX-License-Identifier: GPL-2.0-or-later
// The frei0r functions of every plug-in. What they need is loaded by name, from wherever it lies: a plug-in
// that is alone in a folder works where the filters are installed, and can say what it misses elsewhere.
#include "bridges/frei0r/doorway.h"

namespace {

constexpr int majorVersion = 1;
constexpr int minorVersion = 0;

}  // namespace

int f0r_init() {
    frei0r::Plugin* const plugin = loadPlugin();
    return plugin == nullptr ? 0 : plugin->init();
}

void f0r_deinit() {
    if (loadedPlugin() != nullptr) loadedPlugin()->deinit();
}

void f0r_get_plugin_info(f0r_plugin_info_t* info) {
    *info = {pluginFileName,
             "The Vireo Filters developers",
             F0R_PLUGIN_TYPE_FILTER,
             F0R_COLOR_MODEL_BGRA8888,
             FREI0R_MAJOR_VERSION,
             majorVersion,
             minorVersion,
             0,
             ""};
    if (loadedPlugin() != nullptr) loadedPlugin()->describe(info);
}

void f0r_get_param_info(f0r_param_info_t* info, int index) {
    *info = {"", F0R_PARAM_DOUBLE, ""};
    if (loadedPlugin() != nullptr) loadedPlugin()->describeParameter(info, index);
}

f0r_instance_t f0r_construct(unsigned width, unsigned height) {
    return loadedPlugin() == nullptr ? nullptr : loadedPlugin()->construct(width, height);
}

void f0r_destruct(f0r_instance_t instance) {
    if (instance != nullptr) loadedPlugin()->destruct(instance);
}

void f0r_set_param_value(f0r_instance_t instance, f0r_param_t value, int index) {
    if (instance != nullptr && value != nullptr) loadedPlugin()->setParameter(instance, value, index);
}

void f0r_get_param_value(f0r_instance_t instance, f0r_param_t value, int index) {
    if (instance != nullptr && value != nullptr) loadedPlugin()->getParameter(instance, value, index);
}

void f0r_update(f0r_instance_t instance, double time, const std::uint32_t* source,
                std::uint32_t* destination) {
    if (instance == nullptr || source == nullptr || destination == nullptr) return;
    loadedPlugin()->update(instance, time, source, destination);
}
