// SPDX-License-Identifier: MIT
#include "app/media/ffmpeg_io.h"

#include <fcntl.h>
#include <cerrno>
#include <cstdio>
#include <new>
#include <system_error>

#if defined(_WIN32)
#include "host/win32.h"

#include <io.h>
#else
#include <poll.h>
#include <unistd.h>
#endif

namespace vireo {
namespace {

constexpr int bufferBytes = 1 << 16;
constexpr int pollMilliseconds = 100;
// A blocking write of more than this could wait where no stop reaches it.
constexpr int partBytes = 4096;

int checkedFile(int file) {
    if (file < 0) throw std::system_error(errno, std::generic_category());
    return file;
}

/// From the beginning, or the libraries' code.
std::int64_t soughtTo(int file, std::int64_t offset, int whence) {
#if defined(_WIN32)
    const std::int64_t place = _lseeki64(file, offset, whence);
#else
    const std::int64_t place = lseek(file, offset, whence);
#endif
    return place < 0 ? AVERROR(errno) : place;
}

}  // namespace

FileIo::FileIo(int file, Direction direction, const StopRequest& stop, bool seeks)
    : file_(file), stop_(stop) {
    auto* const buffer = static_cast<unsigned char*>(av_malloc(bufferBytes));
    if (buffer == nullptr) throw std::bad_alloc();
    const bool writes = direction == Direction::Write;
    context_ = avio_alloc_context(buffer, bufferBytes, writes ? 1 : 0, this, writes ? nullptr : read,
                                  writes ? write : nullptr, seeks ? seek : nullptr);
    if (context_ == nullptr) {
        av_free(buffer);
        throw std::bad_alloc();
    }
}

FileIo::~FileIo() {
    av_freep(&context_->buffer);
    avio_context_free(&context_);
}

std::int64_t FileIo::seek(void* self, std::int64_t offset, int whence) {
    const int file = static_cast<const FileIo*>(self)->file_;
    if (whence != AVSEEK_SIZE) return soughtTo(file, offset, whence);
    const std::int64_t place = soughtTo(file, 0, SEEK_CUR);
    const std::int64_t size = soughtTo(file, 0, SEEK_END);
    const std::int64_t back = soughtTo(file, place, SEEK_SET);
    return back < 0 ? back : size;
}

OpenFile::~OpenFile() { close(descriptor_); }

#if defined(_WIN32)

OpenFile::OpenFile(const std::filesystem::path& path)
    : descriptor_(checkedFile(_wopen(path.c_str(), _O_RDONLY | _O_BINARY | _O_NOINHERIT))) {}

bool OpenFile::isSeekable() const {
    return GetFileType(reinterpret_cast<HANDLE>(_get_osfhandle(descriptor_))) == FILE_TYPE_DISK;
}

int FileIo::read(void* self, std::uint8_t* bytes, int size) {
    const FileIo& io = *static_cast<const FileIo*>(self);
    HANDLE file = reinterpret_cast<HANDLE>(_get_osfhandle(io.file_));
    // A pipe cannot be waited for, only looked into.
    DWORD waiting = 0, count = 0, pause = 1;
    while (GetFileType(file) == FILE_TYPE_PIPE &&
           PeekNamedPipe(file, nullptr, 0, nullptr, &waiting, nullptr) != 0 && waiting == 0) {
        if (io.stop_.requested()) return AVERROR_EXIT;
        Sleep(pause);
        pause = std::min<DWORD>(2 * pause, pollMilliseconds / 5);
    }
    if (ReadFile(file, bytes, static_cast<DWORD>(size), &count, nullptr) == 0)
        return GetLastError() == ERROR_BROKEN_PIPE ? AVERROR_EOF : AVERROR(EIO);
    return count == 0 ? AVERROR_EOF : static_cast<int>(count);
}

int FileIo::write(void* self, std::uint8_t* bytes, int size) {
    const FileIo& io = *static_cast<const FileIo*>(self);
    HANDLE file = reinterpret_cast<HANDLE>(_get_osfhandle(io.file_));
    for (int done = 0; done < size;) {
        if (io.stop_.requested()) return AVERROR_EXIT;
        const int part = std::min(size - done, partBytes);
        DWORD count = 0;
        if (WriteFile(file, bytes + done, static_cast<DWORD>(part), &count, nullptr) == 0) {
            switch (GetLastError()) {
                case ERROR_BROKEN_PIPE:
                case ERROR_NO_DATA:
                case ERROR_PIPE_NOT_CONNECTED: return AVERROR(EPIPE);
                case ERROR_DISK_FULL: return AVERROR(ENOSPC);
                default: return AVERROR(EIO);
            }
        }
        done += static_cast<int>(count);
    }
    return size;
}

#else

OpenFile::OpenFile(const std::filesystem::path& path)
    : descriptor_(checkedFile(open(path.c_str(), O_RDONLY | O_CLOEXEC))) {}

bool OpenFile::isSeekable() const { return soughtTo(descriptor_, 0, SEEK_CUR) >= 0; }

int FileIo::waitFor(short event) const {
    while (true) {
        pollfd state{file_, event, 0};
        const int ready = poll(&state, 1, pollMilliseconds);
        if (stop_.requested()) return AVERROR_EXIT;
        if (ready > 0) return 0;
        if (ready < 0 && errno != EINTR) return AVERROR(errno);
    }
}

int FileIo::read(void* self, std::uint8_t* bytes, int size) {
    const FileIo& io = *static_cast<const FileIo*>(self);
    while (true) {
        if (const int failure = io.waitFor(POLLIN); failure < 0) return failure;
        const ssize_t count = ::read(io.file_, bytes, static_cast<std::size_t>(size));
        if (count > 0) return static_cast<int>(count);
        if (count == 0) return AVERROR_EOF;
        if (errno != EINTR && errno != EAGAIN) return AVERROR(errno);
    }
}

int FileIo::write(void* self, std::uint8_t* bytes, int size) {
    const FileIo& io = *static_cast<const FileIo*>(self);
    for (int done = 0; done < size;) {
        if (const int failure = io.waitFor(POLLOUT); failure < 0) return failure;
        const int part = std::min(size - done, partBytes);
        const ssize_t count = ::write(io.file_, bytes + done, static_cast<std::size_t>(part));
        if (count >= 0) {
            done += static_cast<int>(count);
        } else if (errno != EINTR && errno != EAGAIN) {
            return AVERROR(errno);
        }
    }
    return size;
}

#endif

AVIOInterruptCB interruptBy(const StopRequest& stop) {
    return {[](void* request) { return static_cast<const StopRequest*>(request)->requested() ? 1 : 0; },
            const_cast<StopRequest*>(&stop)};
}

std::string fileUrl(const std::string& path) { return "file:" + path; }

}  // namespace vireo
