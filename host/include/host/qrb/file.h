// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_QRB_FILE_H
#define VIREO_HOST_QRB_FILE_H

#include "host/host_export.h"

#include <cstdint>
#include <cstdio>
#include <string>

namespace QRB {

enum FileAccess : std::uint32_t { kFileAccess_Read = 1, kFileAccess_Write = 2 };
enum FileShare : std::uint32_t { kFileShare_None = 0, kFileShare_Read = 1 };
enum FileDisposition : std::uint32_t { kFileDisposition_CreateAlways = 2, kFileDisposition_OpenExisting = 8 };
enum FileAttributes : std::uint32_t { kFileAttributes_Normal = 1 };

/// A file on disk, closed by the destructor. Results are 0, or negative on failure.
class VIREO_HOST_API File {
public:
    File() = default;
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File();

    std::int32_t Create(const std::u16string& path, std::uint32_t access, std::uint32_t share,
                        std::uint32_t disposition, std::uint32_t attributes, bool temporary);

    /// `*done` tells how many bytes were read or written, fewer at the end of the file or on a full disk.
    std::int32_t Read(void* buffer, std::uint32_t count, std::uint32_t* done);
    std::int32_t Write(const void* buffer, std::uint32_t count, std::uint32_t* done);

private:
    std::FILE* file_ = nullptr;
};

}  // namespace QRB

#endif
