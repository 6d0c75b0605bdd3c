// SPDX-License-Identifier: MIT
#include "app/commands/presets.h"

#include "app/commands/commands.h"
#include "app/commands/locations.h"
#include "app/commands/table.h"
#include "app/files.h"
#include "app/render/messages.h"
#include "app/render/render_job.h"
#include "app/settings/settings_file.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <iostream>
#include <map>
#include <memory>

namespace vireo {
namespace {

using Json = nlohmann::ordered_json;

std::vector<Preset> presetsIn(const std::vector<std::filesystem::path>& folders) {
    std::map<std::string, Preset> byName;
    for (const std::filesystem::path& folder : folders) {
        std::error_code error;
        for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
            if (lowerCase(utf8Of(entry.path().extension())) != ".json") continue;
            const std::string name = utf8Of(entry.path().stem());
            byName.try_emplace(comparableName(name), Preset{name, utf8Of(entry.path())});
        }
    }
    std::vector<Preset> presets;
    for (auto& [name, preset] : byName) presets.push_back(std::move(preset));
    return presets;
}

/// A list goes on where one file of it is damaged.
std::string descriptionOf(const Preset& preset, Messages& messages) {
    try {
        return settingsDescription(preset.file, readFile(preset.file));
    } catch (const RenderError& error) {
        messages.warning(error.what());
        return "";
    }
}

void listPresets(const GlobalOptions& global, bool asJson) {
    Messages messages(global.quiet);
    Json list = Json::array();
    std::vector<TableRow> rows{{"Preset", "Description"}};
    for (const Preset& preset : allPresets()) {
        const std::string description = descriptionOf(preset, messages);
        list.push_back({{"name", preset.name}, {"description", description}, {"file", preset.file}});
        rows.push_back({preset.name, description});
    }
    if (asJson) {
        std::cout << list.dump(2) << '\n';
    } else {
        printTable(rows, "", 0);
    }
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
    const std::string quoted = '"' + name + '"';
    if (!matches.empty()) {
        throw RenderError("the preset " + quoted + " may be " + enumeration(firstNames(matches, names), "or"),
                          2);
    }
    const auto nearest = nearestNames(name, names);
    throw RenderError("there is no preset " + quoted +
                          (nearest.empty() ? " and no other" : "; the nearest are " + enumeration(nearest)),
                      2);
}

void addPresetsCommand(CommandSet& commands) {
    const auto json = std::make_shared<bool>(false);
    CLI::App& command = commands.add("presets", "List the ready-made looks", [json](Session& session) {
        listPresets(session.global(), *json);
        return 0;
    });
    command.add_flag("--json", *json, "As JSON");
    command.footer(R"help(Examples:
  vireo presets
  vireo render photo.jpg out.jpg --preset vhs
  vireo render -f "Extract:softness=40" --save-settings ~/.config/vireo/presets/mine.json
  vireo compare photo.jpg --preset mine

A preset is a settings file. Your own are found in the folder vireo/presets of $XDG_CONFIG_HOME or
~/.config (of %APPDATA% on Windows); a "description" in the file is what the list tells of it.)help");
}

}  // namespace vireo
