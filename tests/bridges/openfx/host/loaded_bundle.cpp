// SPDX-License-Identifier: MIT
#include "tests/bridges/openfx/host/test_host.h"

#include <sstream>
#include <stdexcept>

#if defined(_WIN32)
#include "host/win32.h"
#else
#include <dlfcn.h>
#endif

namespace openfx::test {
namespace {

#if defined(_WIN32)
constexpr char separator = ';', architecture[] = "Win64";
#elif defined(__aarch64__)
constexpr char separator = ':', architecture[] = "Linux-aarch64";
#else
constexpr char separator = ':', architecture[] = "Linux-x86-64";
#endif

}  // namespace

std::filesystem::path LoadedBundle::find(const std::string& searchPath, const std::string& name) {
    std::istringstream folders(searchPath);
    for (std::string folder; std::getline(folders, folder, separator);) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
            if (entry.is_directory() && entry.path().filename() == name + ".ofx.bundle") return entry.path();
        }
    }
    throw std::runtime_error("there is no " + name + " in " + searchPath);
}

LoadedBundle::LoadedBundle(const std::filesystem::path& bundle) {
    const auto file = bundle / "Contents" / architecture / bundle.stem();
#if defined(_WIN32)
    library_ = reinterpret_cast<void*>(LoadLibraryW(file.c_str()));
    if (library_ == nullptr) throw std::runtime_error(file.string() + " is not loaded");
#else
    library_ = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library_ == nullptr) throw std::runtime_error(dlerror());
#endif
}

LoadedBundle::~LoadedBundle() {
#if defined(_WIN32)
    FreeLibrary(reinterpret_cast<HMODULE>(library_));
#else
    dlclose(library_);
#endif
}

void* LoadedBundle::symbol(const char* name) const {
#if defined(_WIN32)
    return reinterpret_cast<void*>(GetProcAddress(reinterpret_cast<HMODULE>(library_), name));
#else
    return dlsym(library_, name);
#endif
}

OfxStatus LoadedBundle::setHost(const OfxHost& host) const {
    return reinterpret_cast<OfxStatus (*)(const OfxHost*)>(symbol("OfxSetHost"))(&host);
}

std::vector<OfxPlugin*> LoadedBundle::plugins() const {
    const auto get = reinterpret_cast<OfxPlugin* (*)(int)>(symbol("OfxGetPlugin"));
    const int count = reinterpret_cast<int (*)()>(symbol("OfxGetNumberOfPlugins"))();
    std::vector<OfxPlugin*> all;
    for (int i = 0; i < count; ++i) all.push_back(get(i));
    return all;
}

}  // namespace openfx::test
