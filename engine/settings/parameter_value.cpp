// SPDX-License-Identifier: MIT
#include "engine/settings/parameter_value.h"

#include "engine/error.h"
#include "engine/settings/css_colors.h"
#include "engine/text.h"
#include "host/hosting/mix.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <optional>

namespace vireo {
namespace {

std::string rangeText(const hosting::ValueRange& range) {
    return std::to_string(range.minimum) + " to " + std::to_string(range.maximum);
}

std::int64_t parsePercent(const hosting::Parameter& parameter, const std::string& owner,
                          std::string_view text) {
    if (!takesPercent(parameter)) {
        throw Error(Fault::BadValue,
                    owner + " takes no per cent, only whole numbers from " + rangeText(valueRange(parameter)),
                    text);
    }
    const auto display = parseDecimal(trimmed(text.substr(0, text.size() - 1)));
    if (!display || *display < parameter.displayMinimum || *display > parameter.displayMaximum) {
        throw Error(Fault::BadValue,
                    owner + " goes from " + std::to_string(std::lround(parameter.displayMinimum)) + "% to " +
                        std::to_string(std::lround(parameter.displayMaximum)) + "%, not " + inQuotes(text),
                    text);
    }
    const double stored = parameter.minimum + (*display - parameter.displayMinimum) *
                                                  (parameter.maximum - parameter.minimum) /
                                                  (parameter.displayMaximum - parameter.displayMinimum);
    return static_cast<std::int64_t>(std::floor(stored + 0.5));
}

std::int64_t parseNumber(const hosting::Parameter& parameter, const std::string& owner,
                         std::string_view text) {
    if (text.ends_with('%')) return parsePercent(parameter, owner, text);
    const hosting::ValueRange range = valueRange(parameter);
    const auto value = parseWholeNumber(text);
    if (!value || *value < range.minimum || *value > range.maximum) {
        throw Error(Fault::BadValue,
                    owner + " takes whole numbers from " + rangeText(range) + ", not " + inQuotes(text),
                    text);
    }
    return *value;
}

std::int64_t parseBoolean(const std::string& owner, std::string_view text) {
    const std::string word = lowerCase(text);
    for (const char* on : {"on", "true", "yes", "1"}) {
        if (word == on) return 1;
    }
    for (const char* off : {"off", "false", "no", "0"}) {
        if (word == off) return 0;
    }
    throw Error(Fault::BadValue,
                owner + " is a check box and takes on or off, true or false, yes or no, 1 or 0, not " +
                    inQuotes(text),
                text);
}

std::optional<std::int64_t> parseHexColor(std::string_view digits) {
    if (digits.size() != 6) return std::nullopt;
    std::int64_t rgb = 0;
    for (const char c : digits) {
        const std::size_t digit = std::string_view("0123456789abcdef").find(c);
        if (digit == std::string_view::npos) return std::nullopt;
        rgb = rgb << 4 | static_cast<std::int64_t>(digit);
    }
    return rgb;
}

/// The inside of "rgb(…)".
std::optional<std::int64_t> parseColorChannels(std::string_view text) {
    std::int64_t rgb = 0;
    for (int i = 0; i < 3; ++i) {
        const std::size_t comma = i < 2 ? text.find(',') : text.size();
        if (comma == std::string_view::npos) return std::nullopt;
        const auto channel = parseWholeNumber(trimmed(text.substr(0, comma)));
        if (!channel || *channel < 0 || *channel > 255) return std::nullopt;
        rgb = rgb << 8 | *channel;
        text.remove_prefix(std::min(comma + 1, text.size()));
    }
    return rgb;
}

std::int64_t parseColor(const std::string& owner, std::string_view text) {
    const std::string word = lowerCase(text);
    std::optional<std::int64_t> rgb;
    if (word.starts_with('#')) {
        rgb = parseHexColor(std::string_view(word).substr(1));
    } else if (word.starts_with("rgb") && word.ends_with(')')) {
        const std::string_view inside = trimmed(std::string_view(word).substr(3));
        if (inside.starts_with('(')) rgb = parseColorChannels(inside.substr(1, inside.size() - 2));
    } else if (const auto named = cssColor(word)) {
        rgb = *named;
    }
    if (!rgb) {
        throw Error(
            Fault::BadValue,
            owner +
                " is a colour and takes #rrggbb, rgb(r,g,b) with numbers from 0 to 255 or a CSS name, not " +
                inQuotes(text),
            text);
    }
    return swapRedAndBlue(*rgb);
}

/// A single value, or key frames whose values `parse` reads.
ValueTrack parseTrack(const std::string& owner, std::string_view text, bool isColor,
                      const std::function<std::int64_t(std::string_view)>& parse) {
    text = trimmed(text);
    if (text.find('@') == std::string_view::npos && text.find("..") == std::string_view::npos) {
        return ValueTrack(parse(text));
    }
    std::vector<ValueTrack::Key> keys;
    for (const TrackPiece& piece : splitTrack(text)) {
        const std::size_t at = piece.text.find('@');
        if (at == std::string_view::npos) {
            throw Error(
                Fault::BadValue,
                owner + " has the key frame " + inQuotes(piece.text) + ", which names no time as in 100@5s",
                piece.text);
        }
        const std::string_view time = trimmed(piece.text.substr(at + 1));
        const auto clipTime = parseClipTime(time);
        if (!clipTime) {
            throw Error(Fault::BadValue,
                        owner + " has a key frame at " + inQuotes(time) +
                            ", which is no time like 5s, 2.5, 1:02:03.5 or 120f",
                        time);
        }
        keys.push_back({*clipTime, parse(trimmed(piece.text.substr(0, at))), piece.toNext});
    }
    return ValueTrack(std::move(keys), isColor);
}

std::string trackText(const ValueTrack& track, const std::function<std::string(std::int64_t)>& text) {
    const auto& keys = track.keys();
    if (!track.isKeyed()) return text(keys.front().value);
    std::string all;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (i > 0) all += transitionText(keys[i - 1].toNext);
        all += text(keys[i].value) + '@' + keys[i].time.text;
    }
    return all;
}

}  // namespace

bool takesPercent(const hosting::Parameter& parameter) {
    return parameter.displayMinimum == 0 &&
           (parameter.displayMaximum == 100 || parameter.displayMaximum == 200);
}

std::int64_t swapRedAndBlue(std::int64_t color) {
    return (color & 0x0000FF) << 16 | (color & 0x00FF00) | (color & 0xFF0000) >> 16;
}

ValueTrack parseValueTrack(const hosting::Parameter& parameter, const std::string& owner,
                           std::string_view text) {
    if (parameter.kind == hosting::ParameterKind::Boolean) return ValueTrack(parseBoolean(owner, text));
    const bool isColor = parameter.kind == hosting::ParameterKind::Color;
    return parseTrack(owner, text, isColor, [&](std::string_view value) {
        return isColor ? parseColor(owner, value) : parseNumber(parameter, owner, value);
    });
}

void checkRange(const hosting::ValueRange& range, const std::string& owner, const ValueTrack& track) {
    for (const ValueTrack::Key& key : track.keys()) {
        if (key.value >= range.minimum && key.value <= range.maximum) continue;
        throw Error(Fault::BadValue,
                    owner + " takes whole numbers from " + rangeText(range) + ", not " +
                        inQuotes(std::to_string(key.value)),
                    {});
    }
}

void checkTrack(const hosting::Parameter& parameter, const std::string& owner, const ValueTrack& track) {
    switch (parameter.kind) {
        case hosting::ParameterKind::Number: checkRange(valueRange(parameter), owner, track); break;
        case hosting::ParameterKind::Color: checkRange({0, 0xFFFFFF}, owner, track); break;
        case hosting::ParameterKind::Boolean:
            checkRange({0, 1}, owner, track);
            if (track.isKeyed())
                throw Error(Fault::BadValue, owner + " is a check box and takes no key frames", {});
            break;
    }
}

std::string valueText(const hosting::Parameter& parameter, std::int64_t value) {
    switch (parameter.kind) {
        case hosting::ParameterKind::Boolean: return value != 0 ? "true" : "false";
        case hosting::ParameterKind::Color: {
            char text[8];
            std::snprintf(text, sizeof text, "#%06x", static_cast<unsigned>(swapRedAndBlue(value)));
            return text;
        }
        case hosting::ParameterKind::Number: break;
    }
    return std::to_string(value);
}

std::string valueText(const hosting::Parameter& parameter, const ValueTrack& track) {
    return trackText(track, [&](std::int64_t value) { return valueText(parameter, value); });
}

ValueTrack parseMix(const std::string& owner, std::string_view text) {
    return parseTrack(owner, text, false, [&](std::string_view value) {
        const std::string_view number =
            value.ends_with('%') ? trimmed(value.substr(0, value.size() - 1)) : value;
        const auto percent = parseWholeNumber(number);
        if (!percent || *percent < 0 || *percent > hosting::fullMix) {
            throw Error(Fault::BadValue,
                        owner + " takes whole per cents from 0 to 100, not " + inQuotes(value), value);
        }
        return *percent;
    });
}

std::string mixText(const ValueTrack& mix) {
    return trackText(mix, [](std::int64_t value) { return std::to_string(value) + '%'; });
}

}  // namespace vireo
