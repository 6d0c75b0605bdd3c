// SPDX-License-Identifier: MIT
#include "app/media/ffmpeg_io.h"

#include <poll.h>
#include <unistd.h>
#include <cerrno>
#include <new>

namespace vireo {
namespace {

constexpr int bufferBytes = 1 << 16;
constexpr int pollMilliseconds = 100;

}  // namespace

PipeIo::PipeIo(int file, Direction direction, const StopRequest& stop) : file_(file), stop_(stop) {
    auto* const buffer = static_cast<unsigned char*>(av_malloc(bufferBytes));
    const bool writes = direction == Direction::Write;
    context_ = avio_alloc_context(buffer, bufferBytes, writes ? 1 : 0, this, writes ? nullptr : read,
                                  writes ? write : nullptr, nullptr);
    if (context_ == nullptr) {
        av_free(buffer);
        throw std::bad_alloc();
    }
}

PipeIo::~PipeIo() {
    av_freep(&context_->buffer);
    avio_context_free(&context_);
}

int PipeIo::waitFor(short event) const {
    while (true) {
        pollfd state{file_, event, 0};
        const int ready = poll(&state, 1, pollMilliseconds);
        if (stop_.requested()) return AVERROR_EXIT;
        if (ready > 0) return 0;
        if (ready < 0 && errno != EINTR) return AVERROR(errno);
    }
}

int PipeIo::read(void* self, std::uint8_t* bytes, int size) {
    const PipeIo& io = *static_cast<const PipeIo*>(self);
    while (true) {
        if (const int failure = io.waitFor(POLLIN); failure < 0) return failure;
        const ssize_t count = ::read(io.file_, bytes, static_cast<std::size_t>(size));
        if (count > 0) return static_cast<int>(count);
        if (count == 0) return AVERROR_EOF;
        if (errno != EINTR && errno != EAGAIN) return AVERROR(errno);
    }
}

int PipeIo::write(void* self, std::uint8_t* bytes, int size) {
    const PipeIo& io = *static_cast<const PipeIo*>(self);
    for (int done = 0; done < size;) {
        if (const int failure = io.waitFor(POLLOUT); failure < 0) return failure;
        // A blocking write of more than this could wait where no stop reaches it.
        const int part = std::min(size - done, 4096);
        const ssize_t count = ::write(io.file_, bytes + done, static_cast<std::size_t>(part));
        if (count >= 0) {
            done += static_cast<int>(count);
        } else if (errno != EINTR && errno != EAGAIN) {
            return AVERROR(errno);
        }
    }
    return size;
}

AVIOInterruptCB interruptBy(const StopRequest& stop) {
    return {[](void* request) { return static_cast<const StopRequest*>(request)->requested() ? 1 : 0; },
            const_cast<StopRequest*>(&stop)};
}

std::string fileUrl(const std::string& path) { return "file:" + path; }

}  // namespace vireo
