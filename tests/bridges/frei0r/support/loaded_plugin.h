// SPDX-License-Identifier: GPL-2.0-or-later
// Built plug-ins, loaded as frei0r hosts load them.
#ifndef VIREO_TESTS_BRIDGES_FREI0R_SUPPORT_LOADED_PLUGIN_H
#define VIREO_TESTS_BRIDGES_FREI0R_SUPPORT_LOADED_PLUGIN_H

#include "tests/bridges/frei0r/support/loaded_library.h"

#include <frei0r.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

/// Every plug-in of the build.
inline std::vector<std::filesystem::path> pluginFiles() {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(VIREO_TESTED_PLUGINS)) {
        if (entry.path().extension() == libraryEnding) files.push_back(entry.path());
    }
    std::ranges::sort(files);
    return files;
}

/// The file of a plug-in by its name without folder and ending.
inline std::filesystem::path pluginFile(const std::string& name) {
    return std::filesystem::path(VIREO_TESTED_PLUGINS) / (name + libraryEnding);
}

/// A plug-in's functions. Nothing is called here, not even f0r_init; the library goes with the object.
class LoadedPlugin {
    std::shared_ptr<void> library_;

    template <class Function>
    Function* find(const char* name) const {
        return reinterpret_cast<Function*>(functionOf(library_.get(), name));
    }

public:
    explicit LoadedPlugin(const std::filesystem::path& file) : library_(loadLibrary(file)) {}

    decltype(f0r_init)* init = find<decltype(f0r_init)>("f0r_init");
    decltype(f0r_deinit)* deinit = find<decltype(f0r_deinit)>("f0r_deinit");
    decltype(f0r_get_plugin_info)* getInfo = find<decltype(f0r_get_plugin_info)>("f0r_get_plugin_info");
    decltype(f0r_get_param_info)* getParameterInfo = find<decltype(f0r_get_param_info)>("f0r_get_param_info");
    decltype(f0r_construct)* construct = find<decltype(f0r_construct)>("f0r_construct");
    decltype(f0r_destruct)* destruct = find<decltype(f0r_destruct)>("f0r_destruct");
    decltype(f0r_set_param_value)* setParameter = find<decltype(f0r_set_param_value)>("f0r_set_param_value");
    decltype(f0r_get_param_value)* getParameter = find<decltype(f0r_get_param_value)>("f0r_get_param_value");
    decltype(f0r_update)* update = find<decltype(f0r_update)>("f0r_update");

    f0r_plugin_info_t info() const {
        f0r_plugin_info_t info{};
        getInfo(&info);
        return info;
    }
    /// The index of a parameter by its name.
    int parameter(const std::string& name) const {
        f0r_param_info_t parameter{};
        for (int i = 0; i < info().num_params; ++i) {
            getParameterInfo(&parameter, i);
            if (parameter.name == name) return i;
        }
        throw std::out_of_range(std::string(info().name) + " has no " + name);
    }
    void setNumber(f0r_instance_t instance, int index, double value) const {
        setParameter(instance, &value, index);
    }
    double number(f0r_instance_t instance, int index) const {
        double value = 0;
        getParameter(instance, &value, index);
        return value;
    }
    void setText(f0r_instance_t instance, const std::string& name, std::string text) const {
        f0r_param_string pointer = text.data();
        setParameter(instance, &pointer, parameter(name));
    }
    std::string text(f0r_instance_t instance, const std::string& name) const {
        f0r_param_string pointer = nullptr;
        getParameter(instance, &pointer, parameter(name));
        return pointer;
    }
};

/// A plug-in between f0r_init and f0r_deinit.
class InitialisedPlugin : public LoadedPlugin {
public:
    explicit InitialisedPlugin(const std::filesystem::path& file) : LoadedPlugin(file) {
        if (init() != 1) throw std::runtime_error(file.string() + " does not start");
    }
    InitialisedPlugin(const InitialisedPlugin&) = delete;
    InitialisedPlugin& operator=(const InitialisedPlugin&) = delete;
    ~InitialisedPlugin() { deinit(); }
};

/// An instance of a plug-in.
class PluginInstance {
public:
    PluginInstance(const LoadedPlugin& plugin, unsigned width, unsigned height)
        : instance_(plugin.construct(width, height), plugin.destruct) {}
    operator f0r_instance_t() const { return instance_.get(); }

private:
    std::unique_ptr<void, decltype(f0r_destruct)*> instance_;
};

#endif
