// SPDX-License-Identifier: MIT
#include "app/commands/given_options.h"

#include <map>

namespace vireo {

std::vector<GivenOption> givenOptions(const CLI::App& command, const std::vector<SettingsOption>& settings) {
    std::vector<GivenOption> given;
    std::map<const CLI::Option*, std::size_t> taken;
    std::size_t settingsTaken = 0;
    for (const CLI::Option* option : command.parse_order()) {
        if (option->get_positional()) continue;
        const bool isFlag = option->get_expected_max() == 0;
        GivenOption& added = given.emplace_back(GivenOption{option->get_name(), std::nullopt});
        if (option->get_trigger_on_parse()) {
            added.value = settings[settingsTaken++].value;
        } else if (!isFlag) {
            added.value = option->results()[taken[option]++];
        }
    }
    return given;
}

}  // namespace vireo
