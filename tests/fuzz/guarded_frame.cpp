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

/// Reserving memory costs more than rendering a small frame in it, so frames take what earlier ones left. All
/// of it is poisoned but where frames lie.
std::vector<GuardedFrame::Area> freeAreas;

GuardedFrame::Area takeArea() {
    if (!freeAreas.empty()) {
        GuardedFrame::Area area = std::move(freeAreas.back());
        freeAreas.pop_back();
        return area;
    }
    const std::size_t size = FrameShape::largestLength + pageSize;
    void* const reserved =
        mmap(nullptr, size + 2 * pageSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    const std::span pages(static_cast<std::uint8_t*>(reserved) + pageSize, size);
    REQUIRE(mprotect(pages.data(), size, PROT_READ | PROT_WRITE) == 0);
    __asan_poison_memory_region(pages.data(), size);
    return {pages, {}};
}

}  // namespace

std::int64_t FrameShape::length() const {
    return empty() ? 0 : (height() - 1) * std::abs(std::int64_t{rowBytes}) + rowLength();
}

template <class Visit>
void GuardedFrame::forEachPart(Visit&& visit) const {
    if (padding_ == Padding::Open) return visit(lowest_, shape_.length());
    const std::int64_t rowLength = shape_.rowLength(), rows = shape_.empty() ? 0 : shape_.height();
    for (std::int64_t y = 0; y < rows; ++y) visit(row(y), rowLength);
}

GuardedFrame::GuardedFrame(const FrameShape& shape, Padding padding, std::uint64_t seed, bool opaque)
    : shape_(shape), padding_(padding), area_(takeArea()) {
    const std::size_t size = (static_cast<std::size_t>(shape.length()) / pageSize + 1) * pageSize;
    REQUIRE(size <= area_.pages.size());
    memory_ = shape.againstEnd ? area_.pages.last(size) : area_.pages.first(size);
    __asan_unpoison_memory_region(memory_.data(), size);
    lowest_ = memory_.data() + (shape.againstEnd ? std::ssize(memory_) - shape.length() : 0);
    first_ = lowest_;
    if (shape.rowBytes < 0 && !shape.empty()) first_ -= (shape.height() - 1) * shape.rowBytes;
    descriptor_ = std::make_unique<FrameBuffer>(FrameBuffer{shape.bounds, shape.rowBytes, 0, first_});

    fillWithNoise(memory_, seed);
    const std::int64_t rowLength = shape.rowLength(), rows = opaque ? shape.height() : 0;
    for (std::int64_t y = 0; y < rows; ++y) {
        std::uint8_t* const pixels = row(y);
        for (std::int64_t x = 3; x < rowLength; x += 4) pixels[x] = pixels[x] < 32 ? 255 : 0;
    }
    area_.before.assign(memory_.begin(), memory_.end());
    __asan_poison_memory_region(memory_.data(), size);
    forEachPart([](const std::uint8_t* begin, std::int64_t length) {
        __asan_unpoison_memory_region(begin, static_cast<std::size_t>(length));
    });
}

GuardedFrame::~GuardedFrame() {
    __asan_poison_memory_region(memory_.data(), memory_.size());
    freeAreas.push_back(std::move(area_));
}

bool GuardedFrame::kept(bool rowsMayChange) {
    __asan_unpoison_memory_region(memory_.data(), memory_.size());
    if (rowsMayChange) {
        forEachPart([&](const std::uint8_t* begin, std::int64_t length) {
            std::copy_n(begin, length, area_.before.begin() + (begin - memory_.data()));
        });
    }
    return std::equal(area_.before.begin(), area_.before.end(), memory_.begin());
}
