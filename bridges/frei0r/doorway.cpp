// SPDX-License-Identifier: GPL-2.0-or-later
// The frei0r functions of every plug-in. What they need is loaded by name, from wherever it lies: a plug-in
// that is alone in a folder works where the filters are installed, and can say what it misses elsewhere.
#include "bridges/frei0r/doorway.h"

#include "bridges/frei0r/plugin.h"

#include <dlfcn.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>
#include <mutex>
#include <new>
#include <stdexcept>
#include <string>

namespace {

constexpr int majorVersion = 1;
constexpr int minorVersion = 0;

constexpr const char* libraryName = "libvireo_frei0r.so";

std::filesystem::path pluginFolder() {
    Dl_info info{};
    if (dladdr(&pluginFileName, &info) == 0 || info.dli_fname == nullptr) {
        throw std::runtime_error("the plug-in does not find its own folder");
    }
    return std::filesystem::canonical(info.dli_fname).parent_path();
}

std::filesystem::path libraryPath() {
    const std::filesystem::path folder = pluginFolder();
    for (const char* place : {".", "../vireo", "../bin", VIREO_INSTALLED_FOLDER}) {
        const std::filesystem::path candidate = folder / place / libraryName;
        if (std::filesystem::exists(candidate)) return std::filesystem::canonical(candidate);
    }
    throw std::runtime_error(std::string("there is no ") + libraryName + " near " + folder.string() +
                             " or in " + VIREO_INSTALLED_FOLDER +
                             ": link to the plug-in's own folder instead of copying the plug-in");
}

/// The shared library with this plug-in, from the first f0r_init on.
class Library {
public:
    /// Throws std::exception.
    void load() {
        if (plugin_ != nullptr) return;
        if (handle_ == nullptr) handle_.reset(dlopen(libraryPath().c_str(), RTLD_NOW | RTLD_LOCAL));
        void* const make = handle_ == nullptr ? nullptr : dlsym(handle_.get(), frei0r::makePluginName);
        if (make == nullptr) throw std::runtime_error(dlerror());
        plugin_.reset(reinterpret_cast<frei0r::MakePlugin*>(make)(pluginFilterId, pluginFileName));
        if (plugin_ == nullptr) throw std::bad_alloc();
    }

    frei0r::Plugin* plugin() const { return plugin_.get(); }

private:
    struct Close {
        void operator()(void* handle) const { dlclose(handle); }
    };

    std::unique_ptr<void, Close> handle_;
    std::unique_ptr<frei0r::Plugin> plugin_;
};

Library library;
std::mutex loading;

}  // namespace

int f0r_init() {
    try {
        const std::lock_guard lock(loading);
        library.load();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", pluginFileName, error.what());
        return 0;
    }
    return library.plugin()->init();
}

void f0r_deinit() {
    if (library.plugin() != nullptr) library.plugin()->deinit();
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
    if (library.plugin() != nullptr) library.plugin()->describe(info);
}

void f0r_get_param_info(f0r_param_info_t* info, int index) {
    *info = {"", F0R_PARAM_DOUBLE, ""};
    if (library.plugin() != nullptr) library.plugin()->describeParameter(info, index);
}

f0r_instance_t f0r_construct(unsigned width, unsigned height) {
    return library.plugin() == nullptr ? nullptr : library.plugin()->construct(width, height);
}

void f0r_destruct(f0r_instance_t instance) {
    if (instance != nullptr) library.plugin()->destruct(instance);
}

void f0r_set_param_value(f0r_instance_t instance, f0r_param_t value, int index) {
    if (instance != nullptr && value != nullptr) library.plugin()->setParameter(instance, value, index);
}

void f0r_get_param_value(f0r_instance_t instance, f0r_param_t value, int index) {
    if (instance != nullptr && value != nullptr) library.plugin()->getParameter(instance, value, index);
}

void f0r_update(f0r_instance_t instance, double time, const std::uint32_t* source,
                std::uint32_t* destination) {
    if (instance == nullptr || source == nullptr || destination == nullptr) return;
    library.plugin()->update(instance, time, source, destination);
}
