// SPDX-License-Identifier: MIT
#include "app/media/exif.h"

#include <fstream>
#include <optional>
#include <string_view>
#include <vector>

namespace vireo {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr int upright = 1;

bool begins(Bytes bytes, std::string_view text) {
    return bytes.size() >= text.size() &&
           std::string_view(reinterpret_cast<const char*>(bytes.data()), text.size()) == text;
}

std::uint32_t number(Bytes bytes, std::size_t at, int count, bool littleEndian) {
    std::uint32_t value = 0;
    for (int i = 0; i < count; ++i) {
        const std::size_t offset = at + static_cast<std::size_t>(littleEndian ? count - 1 - i : i);
        value = value << 8 | (offset < bytes.size() ? bytes[offset] : 0);
    }
    return value;
}

Bytes from(Bytes bytes, std::size_t at) { return bytes.subspan(std::min(at, bytes.size())); }

/// The tag in the first directory of a TIFF structure.
int tiffOrientation(Bytes tiff) {
    constexpr std::uint32_t orientationTag = 0x0112;
    const bool littleEndian = begins(tiff, "II");
    if (!littleEndian && !begins(tiff, "MM")) return upright;
    const std::size_t directory = number(tiff, 4, 4, littleEndian);
    const std::uint32_t entries = number(tiff, directory, 2, littleEndian);
    for (std::uint32_t i = 0; i < entries; ++i) {
        const std::size_t entry = directory + 2 + 12 * std::size_t{i};
        if (entry + 12 > tiff.size()) break;
        if (number(tiff, entry, 2, littleEndian) == orientationTag)
            return static_cast<int>(number(tiff, entry + 8, 2, littleEndian));
    }
    return upright;
}

int jpegOrientation(Bytes file) {
    std::size_t at = 2;
    while (at + 4 <= file.size() && file[at] == 0xFF) {
        const std::uint8_t marker = file[at + 1];
        const std::uint32_t length = number(file, at + 2, 2, false);
        if (marker == 0xDA || length < 2) break;
        const Bytes content = from(file, at + 4);
        if (marker == 0xE1 && begins(content, std::string_view("Exif\0\0", 6)))
            return tiffOrientation(content.subspan(6));
        at += 2 + std::size_t{length};
    }
    return upright;
}

/// Walks chunks of a length and a name of four characters each.
int chunkOrientation(Bytes file, std::size_t at, bool png, std::string_view wanted) {
    while (at + 8 <= file.size()) {
        const std::uint32_t length = number(file, at + (png ? 0 : 4), 4, !png);
        if (begins(from(file, at + (png ? 4 : 0)), wanted)) {
            const Bytes content = from(file, at + 8);
            return tiffOrientation(begins(content, "Exif") ? from(content, 6) : content);
        }
        at += 8 + std::size_t{length} + (png ? 4 : length % 2);
    }
    return upright;
}

}  // namespace

int exifOrientationTag(Bytes file) {
    if (begins(file, "\xFF\xD8")) return jpegOrientation(file);
    if (begins(file, "\x89PNG")) return chunkOrientation(file, 8, true, "eXIf");
    if (begins(file, "RIFF") && begins(from(file, 8), "WEBP"))
        return chunkOrientation(file, 12, false, "EXIF");
    return tiffOrientation(file);
}

int exifOrientationTag(const std::filesystem::path& path) {
    // A pipe, whose bytes are there but once, has no size.
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    if (error) return upright;
    // JPEG has the record at its begin, the others may have it at the end.
    std::ifstream stream(path, std::ios::binary);
    std::vector<std::uint8_t> bytes(12);
    stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!stream) return upright;
    const bool isWebp = begins(bytes, "RIFF") && begins(from(bytes, 8), "WEBP");  // AVI begins so, too.
    const bool picture = begins(bytes, "\xFF\xD8") || begins(bytes, "\x89PNG") || isWebp ||
                         begins(bytes, "II") || begins(bytes, "MM");
    if (!picture) return upright;
    bytes.resize(
        static_cast<std::size_t>(begins(bytes, "\xFF\xD8") ? std::min<std::uintmax_t>(size, 1 << 18) : size));
    stream.seekg(0);
    stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return exifOrientationTag(Bytes(bytes));
}

}  // namespace vireo
