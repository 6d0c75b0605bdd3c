// SPDX-License-Identifier: MIT
#include "host/hosting/module_library.h"

#include <dlfcn.h>

#include <stdexcept>

namespace hosting {

ModuleLibrary::ModuleLibrary(const std::filesystem::path& path)
    : handle_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (handle_ == nullptr) {
        throw std::runtime_error("cannot load the module " + path.string() + ": " + dlerror());
    }
}

ModuleLibrary::~ModuleLibrary() { dlclose(handle_); }

MetaPluginFunction* ModuleLibrary::function() const {
    return reinterpret_cast<MetaPluginFunction*>(dlsym(handle_, exportedName));
}

}  // namespace hosting
