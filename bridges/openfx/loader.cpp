// SPDX-License-Identifier: MIT
// Vireo.ofx on Windows, where a library's own libraries are not looked for beside it unless it is loaded with
// that wish. Hosts load this one, which needs none, and it loads the effects.
#include "bridges/openfx/ofx.h"
#include "host/win32.h"

#include <cstdio>

namespace {

/// The library of the effects, null where it is not to be loaded.
HMODULE effects() {
    static const HMODULE loaded = [] {
        constexpr wchar_t name[] = L"VireoOpenFX.dll";
        wchar_t path[32768];
        HMODULE self = nullptr;
        GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            reinterpret_cast<const wchar_t*>(&effects), &self);
        const DWORD capacity = sizeof path / sizeof *path - sizeof name / sizeof *name;
        DWORD length = GetModuleFileNameW(self, path, capacity);
        while (length > 0 && path[length - 1] != L'\\') --length;
        for (const wchar_t* at = name; at == name || at[-1] != L'\0'; ++at) path[length++] = *at;
        const HMODULE library = LoadLibraryExW(path, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
        if (library == nullptr) std::fprintf(stderr, "Vireo.ofx: cannot load %ls.\n", path);
        return library;
    }();
    return loaded;
}

template <class Function>
Function* function(const char* name) {
    const HMODULE library = effects();
    if (library == nullptr) return nullptr;
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

}  // namespace

VIREO_OFX_EXPORT int OfxGetNumberOfPlugins(void) {
    auto* const count = function<int()>("OfxGetNumberOfPlugins");
    return count == nullptr ? 0 : count();
}

VIREO_OFX_EXPORT OfxPlugin* OfxGetPlugin(int nth) {
    auto* const get = function<OfxPlugin*(int)>("OfxGetPlugin");
    return get == nullptr ? nullptr : get(nth);
}

VIREO_OFX_EXPORT OfxStatus OfxSetHost(const OfxHost* host) {
    auto* const set = function<OfxStatus(const OfxHost*)>("OfxSetHost");
    return set == nullptr ? ofx::Failed : set(host);
}
