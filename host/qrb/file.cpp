// SPDX-License-Identifier: MIT
#include "host/qrb/file.h"

#include <filesystem>

#if defined(_WIN32)
#include <share.h>
#endif

namespace QRB {
namespace {

std::FILE* open(const std::filesystem::path& path, bool write, bool shared) {
#if defined(_WIN32)
    return _wfsopen(path.c_str(), write ? L"wb" : L"rb", shared ? _SH_DENYWR : _SH_DENYRW);
#else
    static_cast<void>(shared);
    return std::fopen(path.c_str(), write ? "wb" : "rb");
#endif
}

}  // namespace

File::~File() {
    if (file_ != nullptr) std::fclose(file_);
}

std::int32_t File::Create(const std::u16string& path, std::uint32_t access, std::uint32_t share,
                          std::uint32_t disposition, std::uint32_t, bool) {
    const bool write = access == kFileAccess_Write && disposition == kFileDisposition_CreateAlways;
    const bool read = access == kFileAccess_Read && disposition == kFileDisposition_OpenExisting;
    if (file_ != nullptr || (!write && !read)) return -1;
    file_ = open(std::filesystem::path(path), write, share == kFileShare_Read);
    return file_ == nullptr ? -1 : 0;
}

std::int32_t File::Read(void* buffer, std::uint32_t count, std::uint32_t* done) {
    *done = 0;
    if (file_ == nullptr) return -1;
    *done = static_cast<std::uint32_t>(std::fread(buffer, 1, count, file_));
    return std::ferror(file_) == 0 ? 0 : -1;
}

std::int32_t File::Write(const void* buffer, std::uint32_t count, std::uint32_t* done) {
    *done = 0;
    if (file_ == nullptr) return -1;
    *done = static_cast<std::uint32_t>(std::fwrite(buffer, 1, count, file_));
    return *done == count ? 0 : -1;
}

}  // namespace QRB
