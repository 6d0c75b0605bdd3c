// SPDX-License-Identifier: MIT
#include "filters/lens/kept_positions.h"

#include <new>
#include <utility>

namespace LensDistortion {

std::shared_ptr<Positions> Positions::make(std::int32_t columns, std::int32_t rows) {
    const std::int64_t step =
        (std::int64_t{columns} + lensColumnBlock - 1) / lensColumnBlock * lensColumnBlock;
    const std::int64_t count = 2 * step * rows;
    if (count > largestBytes / static_cast<std::int64_t>(sizeof(std::int32_t))) return nullptr;
    try {
        auto positions = std::make_shared<Positions>();
        positions->coordinates_.reset(new std::int32_t[static_cast<std::size_t>(count)]);
        positions->step_ = step;
        return positions;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

std::shared_ptr<const Positions> KeptPositions::findKept(const Key& key) const {
    const std::lock_guard lock(mutex_);
    return keptKey_ == key ? kept_ : nullptr;
}

bool KeptPositions::begins(const Key& key) {
    const std::lock_guard lock(mutex_);
    const bool isSame = askedBefore_ == key;
    askedBefore_ = key;
    return isSame && !std::exchange(isBeingMade_, true);
}

void KeptPositions::keep(const Key& key, std::shared_ptr<const Positions> positions) {
    const std::lock_guard lock(mutex_);
    keptKey_ = key;
    kept_ = std::move(positions);
    isBeingMade_ = false;
}

}  // namespace LensDistortion
