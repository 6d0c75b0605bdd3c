// SPDX-License-Identifier: MIT
// The one module of a program that cannot load libraries: it is linked in, and goes by any path.
#include "host/hosting/module_library.h"

extern "C" MetaPluginFunction VRMetaPlugin;

namespace hosting {

ModuleLibrary::ModuleLibrary(const std::filesystem::path&) : handle_(reinterpret_cast<void*>(VRMetaPlugin)) {}

ModuleLibrary::~ModuleLibrary() = default;

MetaPluginFunction* ModuleLibrary::function() const { return reinterpret_cast<MetaPluginFunction*>(handle_); }

}  // namespace hosting
