// SPDX-License-Identifier: MIT
// vireo export gstreamer: the elements of a gst-launch-1.0 pipeline.
#include "app/commands/exports.h"
#include "engine/error.h"
#include "engine/settings/parameter_value.h"

#include <cctype>
#include <cstdio>

namespace vireo {
namespace {

/// As GStreamer makes names of elements and properties.
std::string gstreamerName(const std::string& name) {
    std::string made;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        made += std::isalnum(byte) != 0 ? static_cast<char>(std::tolower(byte)) : '-';
    }
    return made;
}

std::string propertyName(const std::string& parameter) {
    const std::string name = gstreamerName(parameter);
    return std::isalpha(static_cast<unsigned char>(name.front())) != 0 ? name : "param-" + name;
}

std::string propertyText(const hosting::Parameter& parameter, std::int64_t value) {
    const std::string name = ' ' + propertyName(parameter.name);
    switch (parameter.kind) {
        case hosting::ParameterKind::Boolean: return name + (value != 0 ? "=true" : "=false");
        case hosting::ParameterKind::Color: {
            std::string text;
            for (int channel = 0; channel < 3; ++channel) {
                char share[16];
                std::snprintf(share, sizeof share, "%.6f",
                              static_cast<double>(value >> 8 * channel & 0xFF) / 255);
                text += name + '-' + "rgb"[channel] + '=' + share;
            }
            return text;
        }
        case hosting::ParameterKind::Number: break;
    }
    return name + '=' + shareText(parameter, value);
}

}  // namespace

Export exportForGstreamer(const std::vector<FilterSettings>& chain, const ExportedClip& clip) {
    Export made;
    made.knowsFields = true;
    // Without blanks, whoever reads the text takes the property as one word.
    for (const FilterSettings& settings : chain)
        made.text += (made.text.empty() ? "" : ";") + filterText(settings, Spelling::Compact);
    made.text = "videoconvert ! vireo filters=\"" + made.text + '"';
    if (clip.facts().frameCount > 0) made.text += " clip-length=" + std::to_string(clip.facts().frameCount);
    made.text += " ! videoconvert";
    return made;
}

Export exportForFrei0rInGstreamer(const std::vector<ExportedFilter>& filters, const ExportedClip& clip) {
    Export made;
    made.text = "videoconvert";
    for (const ExportedFilter& filter : filters) {
        if (filter.settings().isTimed() || filter.isMixed())
            throw Error(Fault::Usage, "a pipeline's text gives filters one value for the whole clip, and " +
                                          filter.name() + " has key frames, a stretch or a mix");
        made.text += " ! frei0r-filter-vireo-" + gstreamerName(filter.name());
        const StoredValues values = filter.valuesAt(0);
        const StoredValues initial = filter.initialValues();
        for (std::size_t i = 0; i < values.size(); ++i)
            if (values[i] != initial[i]) made.text += propertyText(filter.parameters()[i], values[i]);
        if (filter.traits().readsTime && clip.hasRate()) {
            made.text += " frame-rate=" + clip.rateText();
            if (clip.facts().frameCount > 0)
                made.text += " clip-length=" + std::to_string(clip.facts().frameCount);
        }
    }
    made.text += " ! videoconvert";
    return made;
}

}  // namespace vireo
