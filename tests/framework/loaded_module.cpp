// SPDX-License-Identifier: MIT
#include "tests/framework/loaded_module.h"

#include <filesystem>
#include <stdexcept>

#if defined(_WIN32)
#include "host/win32.h"
#else
#include <dlfcn.h>
#endif

namespace {

const std::filesystem::path modulePath = VIREO_TESTED_MODULE;

}  // namespace

#if defined(_WIN32)

LoadedModule::LoadedModule() : handle_(LoadLibraryW(modulePath.c_str())) {
    if (handle_ == nullptr) throw std::runtime_error("the module does not load");
    const auto address =
        reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle_), "VRMetaPlugin"));
    function_ = reinterpret_cast<MetaPluginFunction*>(address);
}

LoadedModule::~LoadedModule() { FreeLibrary(static_cast<HMODULE>(handle_)); }

bool LoadedModule::isLoaded() { return GetModuleHandleW(modulePath.filename().c_str()) != nullptr; }

#else

LoadedModule::LoadedModule() : handle_(dlopen(modulePath.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (handle_ == nullptr) throw std::runtime_error(dlerror());
    function_ = reinterpret_cast<MetaPluginFunction*>(dlsym(handle_, "VRMetaPlugin"));
}

LoadedModule::~LoadedModule() { dlclose(handle_); }

bool LoadedModule::isLoaded() {
    void* const handle = dlopen(modulePath.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr) dlclose(handle);
    return handle != nullptr;
}

#endif
