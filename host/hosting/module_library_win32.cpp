// SPDX-License-Identifier: MIT
#include "host/hosting/module_library.h"

#include "host/win32.h"

#include <stdexcept>
#include <system_error>

namespace hosting {

ModuleLibrary::ModuleLibrary(const std::filesystem::path& path) : handle_(LoadLibraryW(path.c_str())) {
    if (handle_ == nullptr) {
        throw std::runtime_error("cannot load the module " + path.string() + ": " +
                                 std::system_category().message(static_cast<int>(GetLastError())));
    }
}

ModuleLibrary::~ModuleLibrary() { FreeLibrary(static_cast<HMODULE>(handle_)); }

MetaPluginFunction* ModuleLibrary::function() const {
    const auto address = reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle_), exportedName));
    return reinterpret_cast<MetaPluginFunction*>(address);
}

}  // namespace hosting
