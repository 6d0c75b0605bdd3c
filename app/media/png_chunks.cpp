// SPDX-License-Identifier: MIT
#include "app/media/png_chunks.h"

#include <algorithm>
#include <string_view>

namespace vireo {

std::size_t removeSwellingChunks(std::span<std::uint8_t> png) {
    constexpr std::size_t aroundContent = 12, largestProfile = 256 << 10;
    constexpr std::string_view signature = "\x89PNG\r\n\x1a\n";
    const auto textAt = [&](std::size_t at, std::size_t size) {
        return std::string_view(reinterpret_cast<const char*>(png.data()) + at, size);
    };
    const bool isWhole = png.size() >= signature.size() && textAt(0, signature.size()) == signature;
    std::size_t at = isWhole ? signature.size() : 0, kept = at;
    bool hasProfile = false;
    while (at + aroundContent <= png.size()) {
        const std::size_t content =
            static_cast<std::size_t>(png[at]) << 24 | png[at + 1] << 16 | png[at + 2] << 8 | png[at + 3];
        const std::size_t size = std::min(content + aroundContent, png.size() - at);
        const std::string_view type = textAt(at + 4, 4);
        const bool isProfile = type == "iCCP";
        const bool swells =
            type == "zTXt" || type == "iTXt" || (isProfile && (hasProfile || content > largestProfile));
        hasProfile = hasProfile || isProfile;
        if (!swells) {
            if (kept < at)
                std::copy_n(png.begin() + static_cast<std::ptrdiff_t>(at), size,
                            png.begin() + static_cast<std::ptrdiff_t>(kept));
            kept += size;
        }
        at += size;
    }
    std::copy(png.begin() + static_cast<std::ptrdiff_t>(at), png.end(),
              png.begin() + static_cast<std::ptrdiff_t>(kept));
    return kept + png.size() - at;
}

}  // namespace vireo
