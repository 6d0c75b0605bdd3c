// SPDX-License-Identifier: MIT
#ifndef VIREO_BRIDGES_WEB_PICTURE_H
#define VIREO_BRIDGES_WEB_PICTURE_H

#include "host/pixkit/frame_buffer.h"

#include <cstdint>
#include <memory>

namespace web {

/// One frame as filters take it: "bgra", straight alpha, rows bottom-up and aligned to 64 bytes, as the
/// command line lays its frames out.
class Picture {
public:
    /// Throws std::bad_alloc without memory. Pixels are not initialised.
    Picture(int width, int height);

    int width() const { return buffer_.bounds.right; }
    int height() const { return buffer_.bounds.bottom; }
    std::int32_t rowBytes() const { return buffer_.rowBytes; }

    /// The bottom row.
    std::uint8_t* pixels() const { return pixels_.get(); }

    FrameBuffer* buffer() const { return const_cast<FrameBuffer*>(&buffer_); }

    /// Between the order of the channels in browsers and that of filters.
    void exchangeRedAndBlue();

private:
    struct Free {
        void operator()(std::uint8_t* pixels) const;
    };

    FrameBuffer buffer_{};
    std::unique_ptr<std::uint8_t[], Free> pixels_;
};

using PicturePtr = std::shared_ptr<const Picture>;

}  // namespace web

#endif
