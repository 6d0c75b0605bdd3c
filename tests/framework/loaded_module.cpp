// SPDX-License-Identifier: MIT
#include "tests/framework/loaded_module.h"

#include "host/vireo_host.h"

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

std::int32_t LoadedModule::initialise(std::int32_t applicationType, std::uint16_t language) const {
    vireoHostSetApplicationType(applicationType);
    MetaPluginInitialiseRecord record{language};
    return call(MetaPluginInitialise, &record);
}

std::int32_t LoadedModule::count() const {
    MetaPluginCountRecord record{-1};
    return call(MetaPluginCount, &record) == MetaPluginDone ? record.count : -1;
}

std::vector<MetaPluginEntryRecord> LoadedModule::entries() const {
    std::vector<MetaPluginEntryRecord> entries;
    MetaPluginEntryRecord record{};
    while (call(MetaPluginEntryInformation, &record) == MetaPluginDone) {
        entries.push_back(record);
        ++record.index;
    }
    return entries;
}

std::vector<std::uint32_t> LoadedModule::ids() const {
    std::vector<std::uint32_t> ids;
    for (const MetaPluginEntryRecord& entry : entries()) ids.push_back(entry.id);
    return ids;
}
