// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_HOSTING_MODULE_LIBRARY_H
#define VIREO_HOST_HOSTING_MODULE_LIBRARY_H

#include "host/vrm/filter_invocation.h"

#include <filesystem>

namespace hosting {

inline constexpr char exportedName[] = "VRMetaPlugin";

/// A module as a library of the platform, unloaded when it goes.
class ModuleLibrary {
public:
    /// Throws std::runtime_error with one sentence when the library cannot be loaded.
    explicit ModuleLibrary(const std::filesystem::path& path);
    ModuleLibrary(const ModuleLibrary&) = delete;
    ModuleLibrary& operator=(const ModuleLibrary&) = delete;
    ~ModuleLibrary();

    /// What the library exports as VRMetaPlugin, or null.
    MetaPluginFunction* function() const;

private:
    void* handle_ = nullptr;
};

}  // namespace hosting

#endif
