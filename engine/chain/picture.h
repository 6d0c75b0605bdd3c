// SPDX-License-Identifier: MIT
#ifndef VIREO_ENGINE_CHAIN_PICTURE_H
#define VIREO_ENGINE_CHAIN_PICTURE_H

#include "host/pixkit/pixel_formats.h"
#include "host/vireo_host.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace vireo {

inline constexpr std::uint32_t formatBgra16 = PixKit::formatCode("Bgra");
inline constexpr std::uint32_t formatBgraFloat = PixKit::formatCode("BGra");

/// One frame in the layout that filters take: straight alpha, rows bottom-up and, unless told otherwise,
/// aligned to 64 bytes. The format is "bgra" unless a filter that stands alone asked for a deeper one
/// ("Bgra": 16 bits, 0 to 65535; "BGra": float, 0 to 1).
///
/// The memory of a picture that ends is kept for the next ones of its size.
class Picture {
public:
    /// From one row to the next, for a width that a picture may have.
    static std::int64_t rowBytesOf(int width, std::uint32_t format);

    /// Of so many rows. Throws std::bad_alloc where memory cannot be that large.
    static std::size_t bytesOf(std::int64_t rowBytes, int height);

    /// Throws std::bad_alloc without memory. Pixels are not initialised.
    Picture(int width, int height, std::uint32_t format = PixKit::formatBgra)
        : Picture(width, height, format, rowBytesOf(width, format)) {}

    /// With rows that lie so many bytes from one another; negative from the top down.
    Picture(int width, int height, std::uint32_t format, std::int64_t rowBytes);

    /// Pixels that somebody else owns and that outlive the picture.
    Picture(const FrameBuffer& pixels, std::uint32_t format);

    /// Gives memory that is kept for later pictures back to the system.
    static void releaseMemory();

    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;
    ~Picture();

    int width() const { return buffer_.bounds.right; }
    int height() const { return buffer_.bounds.bottom; }
    std::uint32_t format() const { return format_; }
    int rowBytes() const { return buffer_.rowBytes; }

    bool ownsMemory() const { return pixels_ != nullptr; }

    /// Row y of the picture, from the top.
    std::uint8_t* row(int y) {
        return static_cast<std::uint8_t*>(buffer_.pixels.get()) +
               std::int64_t{height() - 1 - y} * buffer_.rowBytes;
    }
    const std::uint8_t* row(int y) const { return const_cast<Picture*>(this)->row(y); }

    /// The buffer as the host library takes it; its bounds begin at 0, 0.
    FrameBuffer* buffer() const { return const_cast<FrameBuffer*>(&buffer_); }

private:
    struct Recycle {
        std::size_t bytes;  ///< 0: somebody else's.
        void operator()(std::uint8_t* pixels) const;
    };

    FrameBuffer buffer_{};
    std::uint32_t format_;
    std::unique_ptr<std::uint8_t[], Recycle> pixels_;
};

using PicturePtr = std::shared_ptr<const Picture>;

/// A picture that may be overwritten, since nobody else holds it or its memory; else null.
inline std::shared_ptr<Picture> overwritable(const PicturePtr& picture) {
    return picture.use_count() == 1 && picture->ownsMemory() ? std::const_pointer_cast<Picture>(picture)
                                                             : nullptr;
}

/// Draws a picture, scaled as the host scales, into a rectangle of another.
void drawScaled(const Picture& picture, Picture& target, const FrameRect& area);

}  // namespace vireo

#endif
