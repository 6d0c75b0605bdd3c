// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_FFMPEG_IO_H
#define VIREO_APP_MEDIA_FFMPEG_IO_H

#include "app/base/interruption.h"
#include "app/media/ffmpeg_objects.h"

#include <memory>

namespace vireo {

/// A pipe as the libraries' input or output. Waiting for its other end gives up when a stop is requested.
class PipeIo {
public:
    enum class Direction { Read, Write };

    /// The file descriptor stays the caller's, open as long as this object.
    PipeIo(int file, Direction direction, const StopRequest& stop);
    PipeIo(const PipeIo&) = delete;
    PipeIo& operator=(const PipeIo&) = delete;
    ~PipeIo();

    AVIOContext* context() const { return context_; }

private:
    static int read(void* self, std::uint8_t* bytes, int size);
    static int write(void* self, std::uint8_t* bytes, int size);
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
