// SPDX-License-Identifier: GPL-2.0-or-later
// Libraries as each system's hosts load them.
#ifndef VIREO_TESTS_BRIDGES_FREI0R_SUPPORT_LOADED_LIBRARY_H
#define VIREO_TESTS_BRIDGES_FREI0R_SUPPORT_LOADED_LIBRARY_H

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

#if defined(_WIN32)
#include "host/win32.h"
#else
#include <dlfcn.h>
#endif

#if defined(_WIN32)

inline constexpr const char* libraryEnding = ".dll";

/// A host that looks for nothing beside a plug-in.
inline std::shared_ptr<void> loadLibrary(const std::filesystem::path& file) {
    HMODULE const handle = LoadLibraryExW(std::filesystem::absolute(file).make_preferred().c_str(), nullptr,
                                          LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (handle == nullptr) throw std::runtime_error(file.string() + " does not load");
    return {handle, FreeLibrary};
}

inline void* functionOf(void* library, const char* name) {
    const auto address = reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
    if (address == nullptr) throw std::runtime_error(std::string("there is no ") + name);
    return address;
}

inline bool isLoaded(const char* file) {
    return GetModuleHandleW(std::filesystem::path(file).filename().c_str()) != nullptr;
}

#else

inline constexpr const char* libraryEnding = ".so";

inline std::shared_ptr<void> loadLibrary(const std::filesystem::path& file) {
    void* const handle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) throw std::runtime_error(dlerror());
    return {handle, dlclose};
}

inline void* functionOf(void* library, const char* name) {
    void* const address = dlsym(library, name);
    if (address == nullptr) throw std::runtime_error(dlerror());
    return address;
}

inline bool isLoaded(const char* file) {
    void* const handle = dlopen(file, RTLD_NOW | RTLD_NOLOAD);
    return handle != nullptr && dlclose(handle) == 0;
}

#endif

#endif
