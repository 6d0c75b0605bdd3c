// SPDX-License-Identifier: MIT
#include "engine/settings/value_track.h"

#include "engine/error.h"
#include "engine/text.h"

#include <cmath>

namespace vireo {
namespace {

constexpr int channels = 4;

// Halves that times in seconds miss by a rounding error still go up.
constexpr double roundingTolerance = 1e-9;

struct TransitionName {
    Transition transition;
    std::string_view text;
};
constexpr TransitionName transitionNames[] = {
    {Transition::Hold, "..hold.."}, {Transition::Smooth, "..smooth.."}, {Transition::Linear, ".."}};

std::int64_t between(std::int64_t from, std::int64_t to, double part, double whole) {
    const double step = static_cast<double>(to - from) * part / whole;
    return from + static_cast<std::int64_t>(std::floor(step + 0.5 + roundingTolerance));
}

std::int64_t channel(std::int64_t color, int index) { return color >> (8 * index) & 0xFF; }

[[noreturn]] void failOrder(const ClipTime& first, const ClipTime& second) {
    throw Error(Fault::BadValue, "key frames must follow each other in time, but " + second.text +
                                     " does not come after " + first.text);
}

}  // namespace

ValueTrack::ValueTrack(std::vector<Key> keys, bool isColor)
    : keys_(std::move(keys)), isColor_(isColor), byFrames_(true) {
    for (const Key& key : keys_) byFrames_ &= key.time.frame.has_value();
    for (std::size_t i = 1; i < keys_.size(); ++i) {
        const ClipTime& before = keys_[i - 1].time;
        const ClipTime& time = keys_[i].time;
        if (before.frame.has_value() != time.frame.has_value()) continue;
        if (time.frame ? *time.frame <= *before.frame : time.seconds <= before.seconds)
            failOrder(before, time);
    }
}

std::int64_t ValueTrack::at(const FramePosition& position) const {
    if (isConstant()) return keys_.front().value;
    const auto timeOf = [&](const ClipTime& time) {
        return byFrames_ ? static_cast<double>(*time.frame) : time.secondsAt(position.frameRate);
    };
    const double now = byFrames_ ? static_cast<double>(position.number) : position.seconds;

    for (std::size_t i = 1; i < keys_.size(); ++i) {
        if (timeOf(keys_[i].time) <= timeOf(keys_[i - 1].time)) failOrder(keys_[i - 1].time, keys_[i].time);
    }
    if (now <= timeOf(keys_.front().time)) return keys_.front().value;
    std::size_t next = 1;
    while (next < keys_.size() && timeOf(keys_[next].time) <= now) ++next;
    if (next == keys_.size()) return keys_.back().value;

    const Key& from = keys_[next - 1];
    const Key& to = keys_[next];
    double whole = timeOf(to.time) - timeOf(from.time);
    double part = now - timeOf(from.time);
    if (from.toNext == Transition::Hold) return from.value;
    if (from.toNext == Transition::Smooth) {
        const double share = part / whole;
        part = share * share * (3 - 2 * share);
        whole = 1;
    }
    if (!isColor_) return between(from.value, to.value, part, whole);
    std::int64_t color = 0;
    for (int i = 0; i < channels; ++i) {
        color |= between(channel(from.value, i), channel(to.value, i), part, whole) << (8 * i);
    }
    return color;
}

std::vector<TrackPiece> splitTrack(std::string_view text) {
    std::vector<TrackPiece> pieces;
    for (;;) {
        const std::size_t dots = text.find("..");
        if (dots == std::string_view::npos) break;
        for (const TransitionName& name : transitionNames) {
            if (!lowerCase(text.substr(dots, name.text.size())).starts_with(name.text)) continue;
            pieces.push_back({trimmed(text.substr(0, dots)), name.transition});
            text.remove_prefix(dots + name.text.size());
            break;
        }
    }
    pieces.push_back({trimmed(text)});
    return pieces;
}

std::string_view transitionText(Transition transition) {
    for (const TransitionName& name : transitionNames) {
        if (name.transition == transition) return name.text;
    }
    return {};
}

}  // namespace vireo
