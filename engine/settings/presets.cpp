// SPDX-License-Identifier: MIT
#include "engine/settings/presets.h"

#include "engine/catalogue/names.h"
#include "engine/error.h"
#include "engine/files.h"
#include "engine/locations.h"
#include "engine/text.h"

#include <map>

namespace vireo {
namespace {

std::vector<Preset> presetsIn(const std::vector<std::filesystem::path>& folders) {
    std::map<std::string, Preset> byName;
    for (const std::filesystem::path& folder : folders) {
        for (const std::filesystem::path& file : filesIn(folder)) {
            if (lowerCase(utf8Of(file.extension())) != ".json") continue;
            const std::string name = utf8Of(file.stem());
            byName.try_emplace(comparableName(name), Preset{name, utf8Of(file)});
        }
    }
    std::vector<Preset> presets;
    for (auto& [name, preset] : byName) presets.push_back(std::move(preset));
    return presets;
}

}  // namespace

std::vector<Preset> allPresets() { return presetsIn(presetFolders()); }

std::vector<Preset> shippedPresets() { return presetsIn({presetFolders().back()}); }

Preset findPreset(const std::string& name) {
    const std::vector<Preset> presets = allPresets();
    std::vector<Names> names;
    for (const Preset& preset : presets) names.push_back({preset.name});
    const auto matches = matchName(name, names);
    if (matches.size() == 1) return presets[matches.front()];
    if (!matches.empty()) {
        throw Error(Fault::UnknownPreset, "the preset " + inQuotes(name) + " may be " +
                                              enumeration(firstNames(matches, names), "or"));
    }
    const auto nearest = nearestNames(name, names);
    throw Error(Fault::UnknownPreset,
                "there is no preset " + inQuotes(name) +
                    (nearest.empty() ? " and no other" : "; the nearest are " + enumeration(nearest)));
}

}  // namespace vireo
