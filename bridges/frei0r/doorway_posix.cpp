// SPDX-License-Identifier: GPL-2.0-or-later
#include "bridges/frei0r/doorway.h"

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

frei0r::Plugin* loadPlugin() {
    try {
        const std::lock_guard lock(loading);
        library.load();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", pluginFileName, error.what());
    }
    return library.plugin();
}

frei0r::Plugin* loadedPlugin() { return library.plugin(); }
