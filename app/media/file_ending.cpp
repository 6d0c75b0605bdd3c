// SPDX-License-Identifier: MIT
#include "app/media/file_ending.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>

namespace vireo {
namespace {

/// Little-endian numbers of a picture; 0 behind its end.
std::uint64_t numberAt(std::span<const std::uint8_t> bytes, std::uint64_t at, unsigned size) {
    if (at > bytes.size() || bytes.size() - at < size) return 0;
    std::uint64_t number = 0;
    for (unsigned i = 0; i < size; ++i) number |= std::uint64_t{bytes[at + i]} << 8 * i;
    return number;
}

/// Behind a text that ends in a zero.
std::size_t behindText(std::span<const std::uint8_t> bytes, std::size_t at) {
    const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(std::min(at, bytes.size()));
    const auto end = std::find(begin, bytes.end(), std::uint8_t{0});
    return static_cast<std::size_t>(end - bytes.begin()) + 1;
}

}  // namespace

bool jpegBreaksOff(std::span<const std::uint8_t> picture) {
    constexpr std::uint8_t startOfScan = 0xDA, end[] = {0xFF, 0xD9};
    std::size_t at = 2;
    while (at + 4 <= picture.size() && picture[at] == 0xFF && picture[at + 1] != startOfScan) {
        const std::size_t length = picture[at + 2] << 8 | picture[at + 3];
        at += 2 + length;
    }
    const auto scan = picture.subspan(std::min(at, picture.size()));
    return std::search(scan.begin(), scan.end(), std::begin(end), std::end(end)) == scan.end();
}

bool exrBreaksOff(std::span<const std::uint8_t> picture) {
    constexpr std::uint64_t tiled = 0x200, deepOrOfParts = 0x1800;
    constexpr std::size_t headerBegin = 8;
    const std::uint64_t flags = numberAt(picture, 4, 4);
    if ((flags & deepOrOfParts) != 0) return false;
    std::size_t at = headerBegin;
    while (at < picture.size() && picture[at] != 0) {
        const std::size_t size = behindText(picture, behindText(picture, at));
        at = size + 4 + static_cast<std::size_t>(numberAt(picture, size, 4));
    }
    if (at >= picture.size()) return true;
    // Blocks follow the table at once, in whatever order.
    const std::size_t table = at + 1;
    const std::size_t beforeSize = (flags & tiled) != 0 ? 16 : 4;
    std::uint64_t firstBlock = picture.size(), end = 0;
    for (at = table; at + 8 <= firstBlock; at += 8) {
        const std::uint64_t block = numberAt(picture, at, 8);
        if (block < table || block > picture.size()) return true;
        firstBlock = std::min(firstBlock, block);
        end = std::max(end, block + beforeSize + 4 + numberAt(picture, block + beforeSize, 4));
    }
    return end > picture.size();
}

bool qoiBreaksOff(std::span<const std::uint8_t> picture) {
    constexpr std::array<std::uint8_t, 8> end{0, 0, 0, 0, 0, 0, 0, 1};
    return std::search(picture.begin(), picture.end(), end.begin(), end.end()) == picture.end();
}

bool gifBreaksOff(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    const auto byte = [&] { return stream.get(); };
    const auto skip = [&](std::streamoff count) { stream.seekg(count, std::ios::cur); };
    const auto skipColors = [&](int flags) {
        if ((flags & 0x80) != 0) skip(3LL << ((flags & 7) + 1));
    };
    const auto skipBlocks = [&] {
        for (int size = byte(); size > 0; size = byte()) skip(size);
    };
    constexpr int extension = 0x21, image = 0x2C, trailer = 0x3B;
    skip(10);
    const int flags = byte();
    skip(2);
    if (!stream) return true;
    skipColors(flags);
    while (stream) {
        switch (byte()) {
            case trailer: return false;
            case extension:
                skip(1);
                skipBlocks();
                break;
            case image: {
                skip(8);
                const int imageFlags = byte();
                if (!stream) return true;
                skipColors(imageFlags);
                skip(1);
                skipBlocks();
                break;
            }
            default: break;
        }
    }
    return true;
}

bool transportStreamBreaksOff(const std::filesystem::path& file) {
    constexpr char sync = 0x47;
    constexpr std::size_t looked = 1024;
    std::array<char, looked> begin{};
    std::ifstream stream(file, std::ios::binary);
    stream.read(begin.data(), looked);
    if (!stream) return false;
    stream.seekg(0, std::ios::end);
    const auto size = static_cast<std::uint64_t>(stream.tellg());
    for (const std::size_t packet : {188, 192, 204}) {
        const std::size_t first = packet == 192 ? 4 : 0;  // behind a time of arrival
        bool repeats = true;
        for (std::size_t at = first; at < looked; at += packet) repeats = repeats && begin[at] == sync;
        if (repeats) return size % packet != 0;
    }
    return false;
}

}  // namespace vireo
