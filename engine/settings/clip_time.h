// SPDX-License-Identifier: MIT
#ifndef VIREO_ENGINE_SETTINGS_CLIP_TIME_H
#define VIREO_ENGINE_SETTINGS_CLIP_TIME_H

#include "engine/chain/clip.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vireo {

/// A moment counted from the first frame of the whole clip: "5s", "2.5", "1:02:03.5" or "120f".
struct ClipTime {
    std::string text;                   ///< As it was written, without blanks.
    std::optional<std::int64_t> frame;  ///< Where it was given as a frame, from 0.
    double seconds = 0;                 ///< Where it was not.

    /// In seconds at a frame rate.
    double secondsAt(double frameRate) const;

    /// Whether a frame stands at this time or later.
    bool reachedBy(const FramePosition& position) const;
};

/// Nothing where the text is no time.
std::optional<ClipTime> parseClipTime(std::string_view text);

}  // namespace vireo

#endif
