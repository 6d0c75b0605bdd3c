// SPDX-License-Identifier: MIT
#include "app/media/movie_tables.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <string_view>

namespace vireo {
namespace {

constexpr std::string_view folders[] = {"moov", "trak", "mdia", "minf", "stbl", "moof", "traf"};

class Tables {
public:
    explicit Tables(const std::filesystem::path& movie) : stream_(movie, std::ios::binary) {
        stream_.seekg(0, std::ios::end);
        size_ = static_cast<std::uint64_t>(std::max<std::streamoff>(0, stream_.tellg()));
    }

    bool announceTooMuch() {
        // Old sound counts 64 samples where it stores 34 bytes.
        constexpr std::uint64_t samplesOfByte = 64, always = 1 << 20;
        walk(0, size_);
        return samples_ > always + samplesOfByte * size_;
    }

private:
    std::uint64_t number(std::uint64_t at, int bytes) {
        stream_.clear();
        stream_.seekg(static_cast<std::streamoff>(at));
        std::uint64_t value = 0;
        for (int i = 0; i < bytes; ++i) value = value << 8 | static_cast<unsigned char>(stream_.get());
        return stream_ ? value : 0;
    }

    void walk(std::uint64_t at, std::uint64_t end) {
        while (at + 8 <= end) {
            std::uint64_t size = number(at, 4), head = 8;
            char type[4] = {};
            stream_.read(type, sizeof type);
            if (size == 1) {
                size = number(at + 8, 8);
                head = 16;
            }
            if (size == 0) size = end - at;
            if (size < head) return;
            size = std::min(size, end - at);
            const std::string_view name(type, sizeof type);
            if (std::find(std::begin(folders), std::end(folders), name) != std::end(folders))
                walk(at + head, at + size);
            if (name == "stsz") samples_ += number(at + head + 8, 4);
            if (name == "trun") samples_ += number(at + head + 4, 4);
            at += size;
        }
    }

    std::ifstream stream_;
    std::uint64_t size_ = 0, samples_ = 0;
};

}  // namespace

bool announcesTooManySamples(const std::filesystem::path& movie) { return Tables(movie).announceTooMuch(); }

}  // namespace vireo
