// SPDX-License-Identifier: MIT
#include "app/media/frame_numbering.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace vireo {

FrameNumbering::FrameNumbering(std::vector<std::int64_t> times) : times_(std::move(times)) {}

FrameNumbering::Numbered FrameNumbering::next(std::int64_t time) {
    const auto found = std::lower_bound(times_.begin(), times_.end(), time);
    if (found != times_.end() && *found == time && !begun_) next_ = found - times_.begin();
    begun_ = true;
    Numbered numbered{0, lostBefore(time)};
    if (const auto own = pending_.find(time); own != pending_.end()) pending_.erase(own);
    // With known times a frame can never come too early in the count.
    if (found != times_.end() && *found == time)
        next_ = std::max<std::int64_t>(next_, found - times_.begin());
    numbered.number = next_++;
    return numbered;
}

std::vector<FrameNumbering::Lost> FrameNumbering::rest() {
    return lostBefore(std::numeric_limits<std::int64_t>::max());
}

std::vector<FrameNumbering::Lost> FrameNumbering::lostBefore(std::int64_t time) {
    std::vector<Lost> lost;
    const auto end = pending_.lower_bound(time);
    // Without a complaint such a packet held no frame of its own: a second field, or one never shown.
    if (failures_ > 0) {
        for (auto packet = pending_.begin(); packet != end; ++packet) lost.push_back({next_++, *packet});
        failures_ = std::max<std::int64_t>(0, failures_ - static_cast<std::int64_t>(lost.size()));
    }
    pending_.erase(pending_.begin(), end);
    return lost;
}

}  // namespace vireo
