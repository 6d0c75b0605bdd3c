// SPDX-License-Identifier: MIT
#include "engine/settings/presets.h"
#include "app/base/messages.h"
#include "app/commands/commands.h"
#include "app/commands/table.h"
#include "engine/error.h"
#include "engine/files.h"
#include "engine/settings/settings_file.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <memory>

namespace vireo {
namespace {

using Json = nlohmann::ordered_json;

/// A list goes on where one file of it is damaged.
std::string descriptionOf(const Preset& preset, Messages& messages) {
    try {
        return settingsDescription(preset.file, readFile(preset.file));
    } catch (const Error& error) {
        messages.warning(MessageCode::PresetDamaged, error.what());
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
