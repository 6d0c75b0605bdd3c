// SPDX-License-Identifier: MIT
#include "tests/fuzz/guarded_frame.h"

#include <sanitizer/asan_interface.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <tuple>

namespace {

std::size_t pageSize() {
    static const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return size;
}

/// Random bytes, made once: frames take theirs from somewhere in the first half.
const std::vector<std::uint8_t>& noise() {
    static const std::vector<std::uint8_t> bytes = [] {
        std::vector<std::uint8_t> made(std::size_t{1} << 20);
        std::uint32_t state = 1;
        for (std::uint8_t& byte : made) {
            state = state * 1664525 + 1013904223;
            byte = static_cast<std::uint8_t>(state >> 24);
        }
        return made;
    }();
    return bytes;
}

void fillWithNoise(std::uint8_t* begin, std::uint8_t* end, std::uint64_t seed) {
    const std::size_t half = noise().size() / 2;
    for (std::size_t from = seed % half; begin < end; from = 0) {
        const std::size_t length = std::min(static_cast<std::size_t>(end - begin), half);
        std::memcpy(begin, noise().data() + from, length);
        begin += length;
    }
}

}  // namespace

bool FrameShape::operator==(const FrameShape& other) const {
    const auto key = [](const FrameShape& shape) {
        return std::tuple(shape.width(), shape.height(), shape.rowBytes, shape.pixelBytes);
    };
    return key(*this) == key(other);
}

std::int64_t FrameShape::length() const {
    return empty() ? 0 : (height() - 1) * std::abs(std::int64_t{rowBytes}) + rowLength();
}

GuardedMemory::GuardedMemory(std::size_t size)
    : size_((size / pageSize() + 1) * pageSize()),
      begin_(static_cast<std::uint8_t*>(mmap(nullptr, size_ + 2 * pageSize(), PROT_NONE,
                                             MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)) +
             pageSize()) {
    if (mprotect(begin_, size_, PROT_READ | PROT_WRITE) != 0) std::abort();
}

GuardedMemory::~GuardedMemory() { munmap(begin_ - pageSize(), size_ + 2 * pageSize()); }

GuardedFrame::GuardedFrame(const FrameShape& shape, Padding padding, std::uint64_t seed, bool opaque)
    : shape_(shape), padding_(padding), memory_(static_cast<std::size_t>(shape.length())) {
    lowest_ = shape.againstEnd ? memory_.end() - shape.length() : memory_.begin();
    first_ = lowest_;
    if (shape.rowBytes < 0 && rows() > 0) first_ -= (rows() - 1) * shape.rowBytes;
    descriptor_ = std::make_unique<FrameBuffer>(FrameBuffer{shape.bounds, shape.rowBytes, 0, first_});

    fillWithNoise(memory_.begin(), memory_.end(), seed);
    if (opaque) {
        for (std::int64_t y = 0; y < rows(); ++y) {
            for (std::int64_t x = 3; x < shape.rowLength(); x += 4) row(y)[x] = row(y)[x] < 32 ? 255 : 0;
        }
    }
    before_.assign(memory_.begin(), memory_.end());
    guard();
}

GuardedFrame::~GuardedFrame() { open(); }

void GuardedFrame::guard() const {
    const auto size = static_cast<std::size_t>(memory_.end() - memory_.begin());
    __asan_poison_memory_region(memory_.begin(), size);
    const auto allow = [](const std::uint8_t* begin, std::int64_t length) {
        __asan_unpoison_memory_region(begin, static_cast<std::size_t>(length));
    };
    if (padding_ == Padding::Open) return allow(lowest_, shape_.length());
    for (std::int64_t y = 0; y < rows(); ++y) allow(row(y), shape_.rowLength());
}

void GuardedFrame::open() {
    __asan_unpoison_memory_region(memory_.begin(), static_cast<std::size_t>(memory_.end() - memory_.begin()));
}

bool GuardedFrame::unchanged() const { return std::equal(before_.begin(), before_.end(), memory_.begin()); }

bool GuardedFrame::changedInRowsOnly() const {
    std::vector<std::uint8_t> expected = before_;
    const auto take = [&](const std::uint8_t* begin, std::int64_t length) {
        std::copy_n(begin, length, expected.begin() + (begin - memory_.begin()));
    };
    if (padding_ == Padding::Open) {
        take(lowest_, shape_.length());
    } else {
        for (std::int64_t y = 0; y < rows(); ++y) take(row(y), shape_.rowLength());
    }
    return std::equal(expected.begin(), expected.end(), memory_.begin());
}
