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
public:
    /// Throws std::runtime_error.
    explicit LoadedPlugin(const std::filesystem::path& file);

    int (*init)() = nullptr;
    void (*deinit)() = nullptr;
    void (*getInfo)(f0r_plugin_info_t*) = nullptr;
    void (*getParameterInfo)(f0r_param_info_t*, int) = nullptr;
    f0r_instance_t (*construct)(unsigned, unsigned) = nullptr;
    void (*destruct)(f0r_instance_t) = nullptr;
    void (*setParameter)(f0r_instance_t, f0r_param_t, int) = nullptr;
    void (*getParameter)(f0r_instance_t, f0r_param_t, int) = nullptr;
    void (*update)(f0r_instance_t, double, const std::uint32_t*, std::uint32_t*) = nullptr;

    f0r_plugin_info_t info() const;
    /// The index of a parameter by its name. Throws std::out_of_range.
    int parameter(const std::string& name) const;
    void setNumber(f0r_instance_t instance, int index, double value) const;
    double number(f0r_instance_t instance, int index) const;
    void setText(f0r_instance_t instance, const std::string& name, std::string text) const;
    std::string text(f0r_instance_t instance, const std::string& name) const;

private:
    std::shared_ptr<void> library_;
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
