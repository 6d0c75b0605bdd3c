// SPDX-License-Identifier: GPL-2.0-or-later
#include "bridges/obs/engine.h"

namespace vireo::obs {
namespace {

VireoEngine* opened = nullptr;

bool openIn(const char* language) {
    VireoOpenOptions options{};
    options.structSize = sizeof options;
    options.language = language;
    return vireoOpen(&options, &opened) == VireoDone;
}

std::string taken(char* text) {
    std::string copy = text;
    vireoFree(text);
    return copy;
}

}  // namespace

bool openEngine(const std::string& locale) { return openIn(locale.substr(0, 2).c_str()) || openIn("en"); }

void closeEngine() {
    vireoClose(opened);
    opened = nullptr;
}

const VireoEngine* engine() { return opened; }

VireoFilter describeFilter(std::uint32_t filter) {
    VireoFilter description{};
    description.structSize = sizeof description;
    vireoDescribeFilter(opened, filter, &description);
    return description;
}

VireoParameter describeParameter(std::uint32_t filter, std::uint32_t parameter) {
    VireoParameter description{};
    description.structSize = sizeof description;
    vireoDescribeParameter(opened, filter, parameter, &description);
    return description;
}

std::string describeChoice(std::uint32_t filter, std::uint32_t parameter, std::uint32_t choice) {
    const char* word = "";
    vireoDescribeChoice(opened, filter, parameter, choice, &word);
    return word;
}

std::vector<Preset> presets() {
    std::vector<Preset> found;
    std::uint32_t count = 0;
    vireoPresetCount(opened, &count);
    for (std::uint32_t i = 0; i < count; ++i) {
        VireoPreset preset{};
        preset.structSize = sizeof preset;
        if (vireoDescribePreset(opened, i, &preset) != VireoDone) continue;
        found.push_back({taken(preset.name), taken(preset.description)});
        vireoFree(preset.file);
    }
    return found;
}

}  // namespace vireo::obs
