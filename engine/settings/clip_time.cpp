// SPDX-License-Identifier: MIT
#include "engine/settings/clip_time.h"

#include "engine/text.h"

namespace vireo {
namespace {

// Frame times are sums of fractions: a frame this little before a moment stands at it.
constexpr double timeTolerance = 1e-6;

constexpr double secondsPerPart = 60;

/// "5", "2.5", "02:03.5" or "1:02:03.5".
std::optional<double> parseSeconds(std::string_view text) {
    double seconds = 0;
    int colons = 0;
    for (std::size_t colon; (colon = text.find(':')) != std::string_view::npos; ++colons) {
        const std::string_view part = text.substr(0, colon);
        const auto value = parseWholeNumber(part);
        if (!isDigits(part) || !value || (colons > 0 && *value >= secondsPerPart)) return std::nullopt;
        seconds = (seconds + static_cast<double>(*value)) * secondsPerPart;
        text.remove_prefix(colon + 1);
    }
    const auto last = parseDecimal(text);
    if (colons > 2 || !last || !isDigits(text.substr(0, 1)) || (colons > 0 && *last >= secondsPerPart)) {
        return std::nullopt;
    }
    return seconds + *last;
}

}  // namespace

double ClipTime::secondsAt(double frameRate) const {
    return frame ? static_cast<double>(*frame) / frameRate : seconds;
}

bool ClipTime::reachedBy(const FramePosition& position) const {
    return frame ? position.number >= *frame : position.seconds >= seconds - timeTolerance;
}

std::optional<ClipTime> parseClipTime(std::string_view text) {
    const std::string_view time = trimmed(text);
    if (time.empty()) return std::nullopt;
    const std::string_view number = trimmed(time.substr(0, time.size() - 1));
    if (time.back() == 'f') {
        const auto frame = parseWholeNumber(number);
        if (!isDigits(number) || !frame) return std::nullopt;
        return ClipTime{std::string(time), *frame, 0};
    }
    const auto seconds = parseSeconds(time.back() == 's' ? number : time);
    if (!seconds) return std::nullopt;
    return ClipTime{std::string(time), std::nullopt, *seconds};
}

}  // namespace vireo
