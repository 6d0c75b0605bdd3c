// SPDX-License-Identifier: MIT
// Where each pixel of a frame is sampled, kept from one frame to the next: a lens that stays as it is needs
// it computed once.
#ifndef VIREO_FILTERS_LENS_KEPT_POSITIONS_H
#define VIREO_FILTERS_LENS_KEPT_POSITIONS_H

#include "filters/lens/lens_mapping.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>

namespace LensDistortion {

/// Positions of a frame's pixels as the sampler takes them, its rows from the last in memory to the first.
class Positions {
public:
    /// So many bytes at most: a frame of 3840 x 2160.
    static constexpr std::int64_t largestBytes = std::int64_t{64} << 20;

    /// To be filled, for at least one of each. Null where the frame is larger, and without memory.
    static std::shared_ptr<Positions> make(std::int32_t columns, std::int32_t rows);

    /// Rows have room up to the end of a block of columns.
    std::int32_t* x(std::int32_t row) { return coordinates_.get() + 2 * step_ * row; }
    std::int32_t* y(std::int32_t row) { return x(row) + step_; }
    const std::int32_t* x(std::int32_t row) const { return coordinates_.get() + 2 * step_ * row; }
    const std::int32_t* y(std::int32_t row) const { return x(row) + step_; }

private:
    std::unique_ptr<std::int32_t[]> coordinates_;
    std::int64_t step_ = 0;
};

/// Keeps the positions of one mapping for as many pixels. Any number of threads may ask at once.
class KeptPositions {
public:
    struct Key {
        LensMapping mapping;
        std::int32_t columns;
        std::int32_t rows;

        bool operator==(const Key&) const = default;
    };

    /// The positions; null where the caller computes its own: for a mapping that was not asked for just
    /// before, as where key frames move the lens, while another thread makes them, and where make() gives
    /// none. fill(positions) computes them.
    template <class Fill>
    std::shared_ptr<const Positions> find(const Key& key, Fill&& fill) {
        if (auto kept = findKept(key)) return kept;
        if (!begins(key)) return nullptr;
        const std::shared_ptr<Positions> made = Positions::make(key.columns, key.rows);
        if (made != nullptr) fill(*made);
        keep(key, made);
        return made;
    }

private:
    std::shared_ptr<const Positions> findKept(const Key& key) const;
    bool begins(const Key& key);
    void keep(const Key& key, std::shared_ptr<const Positions> positions);

    mutable std::mutex mutex_;
    std::optional<Key> askedBefore_;
    bool isBeingMade_ = false;
    std::optional<Key> keptKey_;
    std::shared_ptr<const Positions> kept_;
};

}  // namespace LensDistortion

#endif
