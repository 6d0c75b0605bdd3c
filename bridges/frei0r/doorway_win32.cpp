// SPDX-License-Identifier: GPL-2.0-or-later
// A host need find nothing for a plug-in to load: it needs the system's libraries alone, and so none of the
// standard library's. What it loads stays loaded until the process ends, since no library may let go of
// another while it goes itself.
#include "bridges/frei0r/doorway.h"
#include "host/win32.h"

#include <cstdio>
#include <cwchar>
#include <initializer_list>

namespace {

constexpr wchar_t libraryName[] = L"VireoFrei0r.dll";
constexpr std::size_t pathCapacity = 4096;

SRWLOCK loading = SRWLOCK_INIT;
frei0r::Plugin* plugin = nullptr;

/// A path that grows at its end. Too long a one becomes empty.
struct Path {
    wchar_t text[pathCapacity] = L"";

    void append(const wchar_t* part) {
        if (std::wcslen(text) + std::wcslen(part) < pathCapacity) {
            std::wcscat(text, part);
        } else {
            *text = L'\0';
        }
    }
    bool exists() const { return *text != L'\0' && GetFileAttributesW(text) != INVALID_FILE_ATTRIBUTES; }
};

/// With a backslash at its end.
Path pluginFolder() {
    Path path;
    HMODULE self = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<const wchar_t*>(&plugin), &self);
    if (GetModuleFileNameW(self, path.text, pathCapacity) >= pathCapacity) *path.text = L'\0';
    wchar_t* const end = std::wcsrchr(path.text, L'\\');
    (end == nullptr ? path.text : end + 1)[0] = L'\0';
    return path;
}

/// Where the installer has put the filters, with a backslash at its end; empty where it has not.
Path installedFolder() {
    Path path;
    DWORD size = sizeof path.text;
    if (RegGetValueW(HKEY_CURRENT_USER, L"Software\\Vireo Filters", L"Folder", RRF_RT_REG_SZ, nullptr,
                     path.text, &size) != ERROR_SUCCESS) {
        return {};
    }
    path.append(L"\\");
    return path;
}

/// Empty where there is none.
Path libraryPath() {
    const Path folder = pluginFolder();
    for (const wchar_t* place : {L"", L"..\\", L"..\\bin\\"}) {
        Path candidate = folder;
        candidate.append(place);
        candidate.append(libraryName);
        if (candidate.exists()) return candidate;
    }
    Path installed = installedFolder();
    if (*installed.text != L'\0') installed.append(libraryName);
    return installed.exists() ? installed : Path{};
}

void report(const wchar_t* what, const Path& where, const char* advice) {
    wchar_t sentence[pathCapacity + 128];
    std::swprintf(sentence, sizeof sentence / sizeof *sentence, L"%ls %ls", what, where.text);
    char utf8[3 * pathCapacity] = "";
    WideCharToMultiByte(CP_UTF8, 0, sentence, -1, utf8, sizeof utf8 - 1, nullptr, nullptr);
    std::fprintf(stderr, "%s: %s%s\n", pluginFileName, utf8, advice);
}

frei0r::Plugin* makePlugin() {
    const Path path = libraryPath();
    if (*path.text == L'\0') {
        report(L"there is no VireoFrei0r.dll near", pluginFolder(),
               ": name the plug-in's own folder to the host instead of copying the plug-in");
        return nullptr;
    }
    // Looks for what the library needs beside it.
    const HMODULE library = LoadLibraryExW(path.text, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    auto* const make = library == nullptr ? nullptr
                                          : reinterpret_cast<frei0r::MakePlugin*>(reinterpret_cast<void*>(
                                                GetProcAddress(library, frei0r::makePluginName)));
    if (make == nullptr) {
        report(L"cannot load", path, "");
        return nullptr;
    }
    frei0r::Plugin* const made = make(pluginFilterId, pluginFileName);
    if (made == nullptr) std::fprintf(stderr, "%s: out of memory\n", pluginFileName);
    return made;
}

}  // namespace

frei0r::Plugin* loadPlugin() {
    AcquireSRWLockExclusive(&loading);
    if (plugin == nullptr) plugin = makePlugin();
    frei0r::Plugin* const loaded = plugin;
    ReleaseSRWLockExclusive(&loading);
    return loaded;
}

frei0r::Plugin* loadedPlugin() { return plugin; }
