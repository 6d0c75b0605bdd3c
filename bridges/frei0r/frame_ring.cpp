// SPDX-License-Identifier: GPL-2.0-or-later
#include "bridges/frei0r/frame_ring.h"

#include <algorithm>
#include <cstdlib>

namespace frei0r {

FrameRing::FrameRing(std::size_t capacity, std::size_t pixels) : slots_(capacity) {
    for (Slot& slot : slots_) slot.pixels.resize(pixels);
}

void FrameRing::store(std::int64_t number, const std::uint32_t* pixels) {
    if (slots_.empty()) return;
    auto slot = std::ranges::find_if(slots_, [number](const Slot& candidate) {
        return candidate.storedAt != 0 && candidate.number == number;
    });
    if (slot == slots_.end()) slot = std::ranges::min_element(slots_, {}, &Slot::storedAt);
    slot->number = number;
    slot->storedAt = ++stored_;
    std::copy_n(pixels, slot->pixels.size(), slot->pixels.begin());
}

const std::uint32_t* FrameRing::nearest(std::int64_t number) const {
    const Slot* best = nullptr;
    for (const Slot& slot : slots_) {
        if (slot.storedAt == 0) continue;
        const auto distance = [number](const Slot& candidate) { return std::abs(candidate.number - number); };
        if (best == nullptr || distance(slot) < distance(*best) ||
            (distance(slot) == distance(*best) && slot.number < best->number)) {
            best = &slot;
        }
    }
    return best == nullptr ? nullptr : best->pixels.data();
}

}  // namespace frei0r
