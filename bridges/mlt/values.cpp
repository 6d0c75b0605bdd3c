// SPDX-License-Identifier: MIT
#include "bridges/mlt/values.h"

#include <strings.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>
#include <string_view>

namespace vireo::mlt {
namespace {

// As the command line rounds between key frames: halves go up, also those that a sum has just missed.
std::int64_t rounded(double value) { return static_cast<std::int64_t>(std::floor(value + 0.5 + 1e-9)); }

bool isAnimation(std::string_view text) { return text.find('=') != text.npos; }

bool isNumber(std::string_view text) {
    return text.find_first_not_of("+-.,0123456789eE") == text.npos &&
           text.find_first_of("0123456789") != text.npos;
}

bool isColor(std::string_view text) {
    return text.starts_with("0x") || (text.starts_with('#') && text.size() == 9) || isNumber(text);
}

std::string hexColor(std::int64_t color) {
    char text[16];
    std::snprintf(text, sizeof text, "#%06llx", static_cast<unsigned long long>(color));
    return text;
}

std::int64_t number(mlt_color color) { return color.r << 16 | color.g << 8 | color.b; }

std::int64_t colorBetween(std::int64_t from, std::int64_t to, double share) {
    std::int64_t color = 0;
    for (const int shift : {0, 8, 16}) {
        const auto channel = [shift](std::int64_t of) { return static_cast<double>(of >> shift & 0xFF); };
        color |= rounded(channel(from) + (channel(to) - channel(from)) * share) << shift;
    }
    return color;
}

std::int64_t colorAt(mlt_properties properties, const char* name, const Moment& moment) {
    const auto at = [&](int position) {
        return number(mlt_properties_anim_get_color(properties, name, position, moment.length));
    };
    const std::int64_t color = at(moment.position);
    mlt_animation animation = mlt_properties_get_animation(properties, name);
    mlt_animation_item_s from{}, to{};
    if (animation == nullptr || mlt_animation_prev_key(animation, &from, moment.position) != 0 ||
        mlt_animation_next_key(animation, &to, moment.position) != 0 ||
        from.keyframe_type != mlt_keyframe_linear || from.frame >= moment.position) {
        return color;
    }
    return colorBetween(at(from.frame), at(to.frame),
                        static_cast<double>(moment.position - from.frame) / (to.frame - from.frame));
}

std::optional<std::int64_t> choice(const Parameter& parameter, const char* word) {
    const auto found = std::ranges::find_if(
        parameter.choices, [word](const std::string& of) { return strcasecmp(of.c_str(), word) == 0; });
    if (found == parameter.choices.end()) return std::nullopt;
    return static_cast<std::int64_t>(parameter.minimum) + (found - parameter.choices.begin());
}

/// None where the text is for the engine to read.
std::optional<std::int64_t> numberAt(const Parameter& parameter, const char* text, mlt_properties properties,
                                     const Moment& moment) {
    const char* name = parameter.name.c_str();
    if (parameter.kind == VireoColor) {
        if (isAnimation(text)) return colorAt(properties, name, moment);
        if (isColor(text)) return number(mlt_properties_get_color(properties, name));
        return std::nullopt;
    }
    if (const auto chosen = choice(parameter, text)) return chosen;
    if (!isAnimation(text) && !isNumber(text)) return std::nullopt;
    const double value = mlt_properties_anim_get_double(properties, name, moment.position, moment.length);
    return rounded(std::clamp(value, parameter.minimum, parameter.maximum));
}

}  // namespace

std::vector<Parameter> parametersOf(const VireoEngine* engine, std::uint32_t filter) {
    std::vector<Parameter> parameters;
    const std::uint32_t count = describe(engine, filter).parameterCount;
    for (std::uint32_t i = 0; i < count; ++i) {
        const VireoParameter about = describe(engine, filter, i);
        const bool isColor = about.kind == VireoColor;
        parameters.push_back({about.englishName, static_cast<std::int32_t>(i), about.kind, about.minimum,
                              about.kind == VireoBoolean ? 1 : about.maximum, choices(engine, filter, i),
                              isColor ? hexColor(about.initial) : std::to_string(about.initial)});
    }
    parameters.push_back({"mix", VireoMix, VireoNumber, 0, 100, {}, "100"});
    return parameters;
}

Value valueAt(const Parameter& parameter, mlt_properties properties, const Moment& moment) {
    const char* text = mlt_properties_get(properties, parameter.name.c_str());
    if (text == nullptr || *text == 0) text = parameter.initial.c_str();
    if (const auto number = numberAt(parameter, text, properties, moment)) return {number, {}};
    return {{}, text};
}

void setValue(VireoChain* chain, const Parameter& parameter, const Value& value) {
    check(value.number ? vireoChainSetValue(chain, 0, parameter.index, *value.number)
                       : vireoChainSet(chain, 0, parameter.index, value.text.c_str()));
}

}  // namespace vireo::mlt
