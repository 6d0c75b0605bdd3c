// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_FFMPEG_IO_H
#define VIREO_APP_MEDIA_FFMPEG_IO_H

#include "app/base/interruption.h"
#include "app/media/ffmpeg_objects.h"

#include <cstdint>
#include <filesystem>
#include <memory>

namespace vireo {

/// A file that is open for reading as long as this object. The libraries' own way of opening one closes it
/// twice where memory ends meanwhile.
class OpenFile {
public:
    /// Throws std::system_error.
    explicit OpenFile(const std::filesystem::path& path);
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile();

    int descriptor() const { return descriptor_; }
    bool isSeekable() const;

private:
    int descriptor_;
};

/// An open file or a pipe as the libraries' input or output. Waiting for a pipe's other end gives up when a
/// stop is requested.
class FileIo {
public:
    enum class Direction { Read, Write };

    /// The file descriptor stays the caller's, open as long as this object.
    FileIo(int file, Direction direction, const StopRequest& stop, bool seeks = false);
    FileIo(const FileIo&) = delete;
    FileIo& operator=(const FileIo&) = delete;
    ~FileIo();

    AVIOContext* context() const { return context_; }

private:
    static int read(void* self, std::uint8_t* bytes, int size);
    static int write(void* self, std::uint8_t* bytes, int size);
    static std::int64_t seek(void* self, std::int64_t offset, int whence);
#if !defined(_WIN32)
    int waitFor(short event) const;
#endif

    int file_;
    const StopRequest& stop_;
    AVIOContext* context_;
};

/// For the libraries' own waiting.
AVIOInterruptCB interruptBy(const StopRequest& stop);

/// The name as the libraries take it: never mistaken for a protocol.
std::string fileUrl(const std::string& path);

}  // namespace vireo

#endif
