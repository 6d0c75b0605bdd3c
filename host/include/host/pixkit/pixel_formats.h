// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_PIXKIT_PIXEL_FORMATS_H
#define VIREO_HOST_PIXKIT_PIXEL_FORMATS_H

#include "host/host_export.h"
#include "host/pixkit/frame_buffer.h"

#include <cstdint>

namespace PixKit {

/// A format's code: its four characters as a little-endian word.
constexpr std::uint32_t formatCode(const char (&characters)[5]) {
    std::uint32_t code = 0;
    for (int i = 3; i >= 0; --i) code = code << 8 | static_cast<unsigned char>(characters[i]);
    return code;
}

inline constexpr std::uint32_t formatBgra = formatCode("bgra");
inline constexpr std::uint32_t formatVuya = formatCode("vuya");

/// Bytes of a pixel: 16 for the float formats ("VUya", "BGra", "ARgb"), 8 for the 16-bit ones ("Vuya",
/// "Bgra", "Argb"), else 4.
VIREO_HOST_API int bytesPerPixel(std::uint32_t code);

/// The format of a buffer, as vireoHostSetPixelFormat set it, or "bgra".
VIREO_HOST_API std::uint32_t pixelFormat(const FrameBuffer* handle);

/// Forgets the format of the buffer at the address.
void forgetPixelFormat(const FrameBuffer* handle);

}  // namespace PixKit

#endif
