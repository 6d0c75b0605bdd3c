// SPDX-License-Identifier: MIT
#include "bridges/gstreamer/properties.h"

#include "bridges/gstreamer/engine.h"

namespace vireo::gstreamer {
namespace {

/// GStreamer's colours are big-endian ARGB.
constexpr guint opaque = 0xFF000000;
constexpr guint colorBits = 0x00FFFFFF;

std::string withoutBlanks(const std::string& name) {
    std::string made;
    for (const char c : name)
        if (g_ascii_isalnum(c)) made += c;
    return made;
}

/// Types and what they show are never given back.
GType newEnum(const std::string& name, std::uint32_t filter, std::uint32_t parameter,
              const VireoParameter& facts) {
    auto* const values = g_new0(GEnumValue, facts.choiceCount + 1);
    for (std::uint32_t i = 0; i < facts.choiceCount; ++i) {
        const char* word = "";
        vireoDescribeChoice(engine(), filter, parameter, i, &word);
        values[i] = {static_cast<gint>(facts.minimum) + static_cast<gint>(i), g_strdup(word),
                     g_strdup(propertyName(word).c_str())};
    }
    const GType type = g_enum_register_static(name.c_str(), values);
    gst_type_mark_as_plugin_api(type, static_cast<GstPluginAPIFlags>(0));
    return type;
}

std::string number(double value) {
    char text[G_ASCII_DTOSTR_BUF_SIZE];
    return g_ascii_dtostr(text, sizeof text, value);
}

/// What the name and the range do not tell.
std::string blurbOf(const VireoParameter& facts) {
    std::string blurb = facts.label;
    if (facts.kind == VireoColor) return blurb + " (big-endian ARGB, alpha means nothing)";
    const bool isScaled = facts.displayMinimum != facts.minimum || facts.displayMaximum != facts.maximum;
    if (facts.kind == VireoNumber && facts.choiceCount == 0 && isScaled) {
        blurb +=
            ", which people read as " + number(facts.displayMinimum) + " to " + number(facts.displayMaximum);
        if (*facts.unit != '\0') blurb += std::string(" ") + facts.unit;
    } else if (*facts.unit != '\0') {
        blurb += std::string(" in ") + facts.unit;
    }
    return blurb;
}

}  // namespace

std::string propertyName(const std::string& parameter) {
    std::string made;
    for (const char c : parameter) {
        if (g_ascii_isalnum(c)) {
            made += g_ascii_tolower(c);
        } else if (!made.empty() && made.back() != '-') {
            made += '-';
        }
    }
    if (made.ends_with('-')) made.pop_back();
    return made;
}

GParamSpec* newProperty(const char* owner, std::uint32_t filter, std::uint32_t parameter) {
    const VireoParameter facts = describeParameter(filter, parameter);
    const std::string name = propertyName(facts.englishName);
    const std::string blurb = blurbOf(facts);
    const auto initial = static_cast<gint>(facts.initial);
    if (facts.kind == VireoBoolean)
        return g_param_spec_boolean(name.c_str(), facts.label, blurb.c_str(), initial != 0, parameterFlags);
    if (facts.kind == VireoColor)
        return g_param_spec_uint(name.c_str(), facts.label, blurb.c_str(), 0, G_MAXUINT32,
                                 opaque | static_cast<guint>(initial), parameterFlags);
    if (facts.choiceCount > 0) {
        const GType type = newEnum(owner + withoutBlanks(facts.englishName), filter, parameter, facts);
        return g_param_spec_enum(name.c_str(), facts.label, blurb.c_str(), type, initial, parameterFlags);
    }
    return g_param_spec_int(name.c_str(), facts.label, blurb.c_str(), static_cast<gint>(facts.minimum),
                            static_cast<gint>(facts.maximum), initial, parameterFlags);
}

std::int64_t storedValue(const GValue& value) {
    if (G_VALUE_HOLDS_BOOLEAN(&value)) return g_value_get_boolean(&value) != FALSE ? 1 : 0;
    if (G_VALUE_HOLDS_UINT(&value)) return g_value_get_uint(&value) & colorBits;
    if (G_VALUE_HOLDS_ENUM(&value)) return g_value_get_enum(&value);
    return g_value_get_int(&value);
}

void setStoredValue(GValue& value, std::int64_t stored) {
    if (G_VALUE_HOLDS_BOOLEAN(&value)) {
        g_value_set_boolean(&value, stored != 0 ? TRUE : FALSE);
    } else if (G_VALUE_HOLDS_UINT(&value)) {
        g_value_set_uint(&value, opaque | static_cast<guint>(stored));
    } else if (G_VALUE_HOLDS_ENUM(&value)) {
        g_value_set_enum(&value, static_cast<gint>(stored));
    } else {
        g_value_set_int(&value, static_cast<gint>(stored));
    }
}

}  // namespace vireo::gstreamer
