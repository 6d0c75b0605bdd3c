// SPDX-License-Identifier: GPL-2.0-or-later
#include "tests/bridges/frei0r/support/loaded_plugin.h"

#include <dlfcn.h>

#include <algorithm>
#include <stdexcept>

std::vector<std::filesystem::path> pluginFiles() {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(VIREO_TESTED_PLUGINS)) {
        if (entry.path().extension() == ".so") files.push_back(entry.path());
    }
    std::ranges::sort(files);
    return files;
}

std::filesystem::path pluginFile(const std::string& name) {
    return std::filesystem::path(VIREO_TESTED_PLUGINS) / (name + ".so");
}

LoadedPlugin::LoadedPlugin(const std::filesystem::path& file)
    : library_(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL), [](void* handle) {
          if (handle != nullptr) dlclose(handle);
      }) {}

LoadedPlugin::Symbol LoadedPlugin::find(const char* name) const {
    void* const address = library_ == nullptr ? nullptr : dlsym(library_.get(), name);
    if (address == nullptr) throw std::runtime_error(dlerror());
    return {address};
}

f0r_plugin_info_t LoadedPlugin::info() const {
    f0r_plugin_info_t info{};
    getInfo(&info);
    return info;
}

int LoadedPlugin::parameter(const std::string& name) const {
    for (int i = 0; i < info().num_params; ++i) {
        f0r_param_info_t parameter{};
        getParameterInfo(&parameter, i);
        if (parameter.name == name) return i;
    }
    throw std::out_of_range(std::string(info().name) + " has no " + name);
}

void LoadedPlugin::setNumber(f0r_instance_t instance, int index, double value) const {
    setParameter(instance, &value, index);
}

double LoadedPlugin::number(f0r_instance_t instance, int index) const {
    double value = 0;
    getParameter(instance, &value, index);
    return value;
}

void LoadedPlugin::setText(f0r_instance_t instance, const std::string& name, std::string text) const {
    f0r_param_string pointer = text.data();
    setParameter(instance, &pointer, parameter(name));
}

std::string LoadedPlugin::text(f0r_instance_t instance, const std::string& name) const {
    f0r_param_string pointer = nullptr;
    getParameter(instance, &pointer, parameter(name));
    return pointer;
}

InitialisedPlugin::InitialisedPlugin(const std::filesystem::path& file) : LoadedPlugin(file) {
    if (init() != 1) throw std::runtime_error(file.string() + " does not start");
}

InitialisedPlugin::~InitialisedPlugin() { deinit(); }
