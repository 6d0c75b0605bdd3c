// SPDX-License-Identifier: MIT
#include "tests/fuzz/guarded_frame.h"

#include "tests/fuzz/require.h"

#include <sanitizer/asan_interface.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

const auto pageSize = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));

/// Random bytes: frames take theirs from somewhere in the first half.
const std::vector<std::uint8_t> noise = [] {
    std::vector<std::uint8_t> made(std::size_t{1} << 20);
    std::uint32_t state = 1;
    for (std::uint8_t& byte : made) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<std::uint8_t>(state >> 24);
    }
    return made;
}();

void fillWithNoise(std::span<std::uint8_t> rest, std::uint64_t seed) {
    const std::size_t half = noise.size() / 2;
    for (std::size_t from = seed % half; !rest.empty(); from = 0) {
        const std::size_t length = std::min(rest.size(), half);
        std::memcpy(rest.data(), noise.data() + from, length);
        rest = rest.subspan(length);
    }
}

}  // namespace

std::int64_t FrameShape::length() const {
    return empty() ? 0 : (height() - 1) * std::abs(std::int64_t{rowBytes}) + rowLength();
}

template <class Visit>
void GuardedFrame::forEachPart(Visit&& visit) const {
    if (padding_ == Padding::Open) return visit(lowest_, shape_.length());
    for (std::int64_t y = 0; !shape_.empty() && y < shape_.height(); ++y) visit(row(y), shape_.rowLength());
}

GuardedFrame::GuardedFrame(const FrameShape& shape, Padding padding, std::uint64_t seed, bool opaque)
    : shape_(shape), padding_(padding) {
    const std::size_t size = (static_cast<std::size_t>(shape.length()) / pageSize + 1) * pageSize;
    void* const reserved =
        mmap(nullptr, size + 2 * pageSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    memory_ = {static_cast<std::uint8_t*>(reserved) + pageSize, size};
    REQUIRE(mprotect(memory_.data(), size, PROT_READ | PROT_WRITE) == 0);
    lowest_ = memory_.data() + (shape.againstEnd ? std::ssize(memory_) - shape.length() : 0);
    first_ = lowest_;
    if (shape.rowBytes < 0 && !shape.empty()) first_ -= (shape.height() - 1) * shape.rowBytes;
    descriptor_ = std::make_unique<FrameBuffer>(FrameBuffer{shape.bounds, shape.rowBytes, 0, first_});

    fillWithNoise(memory_, seed);
    for (std::int64_t y = 0; opaque && y < shape.height(); ++y) {
        for (std::int64_t x = 3; x < shape.rowLength(); x += 4) row(y)[x] = row(y)[x] < 32 ? 255 : 0;
    }
    before_.assign(memory_.begin(), memory_.end());
    __asan_poison_memory_region(memory_.data(), size);
    forEachPart([](const std::uint8_t* begin, std::int64_t length) {
        __asan_unpoison_memory_region(begin, static_cast<std::size_t>(length));
    });
}

GuardedFrame::~GuardedFrame() {
    __asan_unpoison_memory_region(memory_.data(), memory_.size());
    munmap(memory_.data() - pageSize, memory_.size() + 2 * pageSize);
}

bool GuardedFrame::kept(bool rowsMayChange) {
    __asan_unpoison_memory_region(memory_.data(), memory_.size());
    std::vector<std::uint8_t> expected = before_;
    if (rowsMayChange) {
        forEachPart([&](const std::uint8_t* begin, std::int64_t length) {
            std::copy_n(begin, length, expected.begin() + (begin - memory_.data()));
        });
    }
    return std::equal(expected.begin(), expected.end(), memory_.begin());
}
