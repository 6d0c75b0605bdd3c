// SPDX-License-Identifier: GPL-2.0-or-later
#ifndef VIREO_BRIDGES_FREI0R_FRAME_RING_H
#define VIREO_BRIDGES_FREI0R_FRAME_RING_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace frei0r {

/// The last few frames that a host handed over, by number.
class FrameRing {
public:
    /// `capacity` frames of `pixels` pixels each, all allocated here.
    FrameRing(std::size_t capacity, std::size_t pixels);

    /// Keeps a copy under its number, in place of the same number or of the frame that was stored longest
    /// ago.
    void store(std::int64_t number, const std::uint32_t* pixels);

    /// The frame whose number is nearest, the earlier of two; null while nothing is stored.
    const std::uint32_t* nearest(std::int64_t number) const;

private:
    struct Slot {
        std::int64_t number = 0;
        std::uint64_t storedAt = 0;  ///< 0: empty.
        std::vector<std::uint32_t> pixels;
    };

    std::vector<Slot> slots_;
    std::uint64_t stored_ = 0;
};

}  // namespace frei0r

#endif
