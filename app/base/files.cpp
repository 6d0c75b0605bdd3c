// SPDX-License-Identifier: MIT
#include "app/base/files.h"

#include "app/base/interruption.h"
#include "app/base/output_file.h"
#include "engine/error.h"

#include <cerrno>
#include <fstream>
#include <system_error>

#if defined(_WIN32)
#include "host/win32.h"
#else
#include <unistd.h>
#endif

namespace vireo {
namespace {

std::string errorName(int code) { return std::generic_category().message(code); }

}  // namespace

std::string reasonOf(const std::error_code& error) { return error.default_error_condition().message(); }

#if defined(_WIN32)

bool isHeld(const std::filesystem::path& path) {
    HANDLE file = CreateFileW(path.c_str(), GENERIC_READ | DELETE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) return GetLastError() == ERROR_SHARING_VIOLATION;
    CloseHandle(file);
    return false;
}

#else

bool isHeld(const std::filesystem::path&) { return false; }

#endif

void removeFolder(const std::filesystem::path& folder) {
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error))
        std::filesystem::remove_all(entry.path(), error);
#if defined(_WIN32)
    std::filesystem::remove(folder, error);
#else
    // The library's own way would first take it for a file, which the sandbox refuses.
    rmdir(folder.c_str());
#endif
}

void refuseExisting(const std::string& path) {
    std::error_code error;
    if (std::filesystem::exists(pathOf(path), error))
        throw Error(path + " exists already; --overwrite replaces it");
}

void writeBytes(const std::filesystem::path& path, std::string_view bytes, const std::string& shown) {
    errno = 0;
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) throw Error("cannot write " + shown + (errno == 0 ? "" : ": " + errorName(errno)));
}

void writeFile(const std::string& path, std::string_view content, bool overwrite) {
    if (!overwrite) refuseExisting(path);
    const InterruptionGuard guard;
    OutputFile file(pathOf(path), overwrite);
    writeBytes(file.path(), content, path);
    file.commit();
}

}  // namespace vireo
