// SPDX-License-Identifier: MIT
#ifndef VIREO_ENGINE_SETTINGS_VALUE_TRACK_H
#define VIREO_ENGINE_SETTINGS_VALUE_TRACK_H

#include "engine/settings/clip_time.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vireo {

/// How a value goes on from one key frame to the next.
enum class Transition { Linear, Hold, Smooth };

/// A whole value that may change along the clip.
class ValueTrack {
public:
    struct Key {
        ClipTime time;
        std::int64_t value = 0;
        Transition toNext = Transition::Linear;
    };

    /// The same value everywhere.
    explicit ValueTrack(std::int64_t value) : keys_{{ClipTime{}, value}} {}

    /// Key frames, at least one. `isColor` changes each of the value's four bytes by itself. Throws
    /// Error where keys that can be compared do not stand in order of time.
    ValueTrack(std::vector<Key> keys, bool isColor);

    bool isConstant() const { return keys_.size() == 1; }
    /// Whether it was given as key frames, be it one.
    bool isKeyed() const { return !keys_.front().time.text.empty(); }
    const std::vector<Key>& keys() const { return keys_; }

    /// The value at a frame. The first and the last value hold outside; values in between are rounded half
    /// up. Throws Error where frames and seconds are mixed and, at the clip's frame rate, out of order.
    std::int64_t at(const FramePosition& position) const;

private:
    std::vector<Key> keys_;
    bool isColor_ = false;
    bool byFrames_ = false;  ///< All keys are frames, so that time stamps do not matter.
};

/// Text cut at the transitions of key frames ("..", "..hold..", "..smooth.."); one piece where there are
/// none.
struct TrackPiece {
    std::string_view text;
    Transition toNext = Transition::Linear;
};
std::vector<TrackPiece> splitTrack(std::string_view text);

/// What stands between two keys in text.
std::string_view transitionText(Transition transition);

}  // namespace vireo

#endif
