// SPDX-License-Identifier: GPL-2.0-or-later
// Built plug-ins, loaded as frei0r hosts load them.
#ifndef VIREO_TESTS_BRIDGES_FREI0R_SUPPORT_LOADED_PLUGIN_H
#define VIREO_TESTS_BRIDGES_FREI0R_SUPPORT_LOADED_PLUGIN_H

#include <frei0r.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// Every plug-in of the build.
std::vector<std::filesystem::path> pluginFiles();

/// The file of a plug-in by its name without folder and ending.
std::filesystem::path pluginFile(const std::string& name);

/// A plug-in's functions. Nothing is called here, not even f0r_init; the library goes with the object.
class LoadedPlugin {
    std::shared_ptr<void> library_;

    struct Symbol {
        void* address;
        template <class Function>
        operator Function*() const {
            return reinterpret_cast<Function*>(address);
        }
    };
    Symbol find(const char* name) const;

public:
    /// Throws std::runtime_error.
    explicit LoadedPlugin(const std::filesystem::path& file);

    decltype(f0r_init)* init = find("f0r_init");
    decltype(f0r_deinit)* deinit = find("f0r_deinit");
    decltype(f0r_get_plugin_info)* getInfo = find("f0r_get_plugin_info");
    decltype(f0r_get_param_info)* getParameterInfo = find("f0r_get_param_info");
    decltype(f0r_construct)* construct = find("f0r_construct");
    decltype(f0r_destruct)* destruct = find("f0r_destruct");
    decltype(f0r_set_param_value)* setParameter = find("f0r_set_param_value");
    decltype(f0r_get_param_value)* getParameter = find("f0r_get_param_value");
    decltype(f0r_update)* update = find("f0r_update");

    f0r_plugin_info_t info() const;
    /// The index of a parameter by its name. Throws std::out_of_range.
    int parameter(const std::string& name) const;
    void setNumber(f0r_instance_t instance, int index, double value) const;
    double number(f0r_instance_t instance, int index) const;
    void setText(f0r_instance_t instance, const std::string& name, std::string text) const;
    std::string text(f0r_instance_t instance, const std::string& name) const;
};

/// A plug-in between f0r_init and f0r_deinit.
class InitialisedPlugin : public LoadedPlugin {
public:
    explicit InitialisedPlugin(const std::filesystem::path& file);
    InitialisedPlugin(const InitialisedPlugin&) = delete;
    InitialisedPlugin& operator=(const InitialisedPlugin&) = delete;
    ~InitialisedPlugin();
};

/// An instance of a plug-in.
class PluginInstance {
public:
    PluginInstance(const LoadedPlugin& plugin, unsigned width, unsigned height)
        : plugin_(plugin), instance_(plugin.construct(width, height)) {}
    PluginInstance(const PluginInstance&) = delete;
    PluginInstance& operator=(const PluginInstance&) = delete;
    ~PluginInstance() { plugin_.destruct(instance_); }

    operator f0r_instance_t() const { return instance_; }

private:
    const LoadedPlugin& plugin_;
    f0r_instance_t instance_;
};

#endif
