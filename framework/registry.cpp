// SPDX-License-Identifier: MIT
#include "framework/registry.h"

#include <algorithm>
#include <stdexcept>

std::size_t grownCapacity(std::size_t capacity, std::size_t required) {
    constexpr std::size_t recordBytes = 24;
    constexpr std::size_t limit = ~std::size_t{0} / recordBytes;
    if (required > limit) throw std::length_error("vector<T> too long");
    if (capacity > limit - capacity / 2) return required;
    return std::max(capacity + capacity / 2, required);
}

void appendEntry(std::vector<FilterEntryRecord>& entries, const FilterEntryRecord& entry) {
    if (entries.size() == entries.capacity()) {
        entries.reserve(grownCapacity(entries.capacity(), entries.size() + 1));
    }
    entries.push_back(entry);
}
