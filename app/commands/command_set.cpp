// SPDX-License-Identifier: MIT
#include "app/commands/command_set.h"

#include "engine/locations.h"
#include "engine/settings/clip_time.h"
#include "engine/text.h"

#include <algorithm>

namespace vireo {

const Catalogue& Session::catalogue() {
    if (!catalogue_) {
        module_.emplace(findModule(global_.module));
        catalogue_.emplace(module_->filters());
    }
    return *catalogue_;
}

CLI::App& CommandSet::add(CLI::App& parent, const std::string& name, const std::string& description,
                          RunCommand run) {
    CLI::App* command = parent.add_subcommand(name, description);
    commands_.emplace_back(command, std::move(run));
    return *command;
}

CLI::App& CommandSet::addFamily(const std::string& name, const std::string& description) {
    CLI::App* family = program_.add_subcommand(name, description);
    family->require_subcommand(1);
    return *family;
}

const RunCommand* CommandSet::chosen() const {
    const auto found = std::find_if(commands_.begin(), commands_.end(),
                                    [](const auto& entry) { return entry.first->parsed(); });
    return found == commands_.end() ? nullptr : &found->second;
}

std::string sentenceOf(const CLI::ParseError& error) {
    std::string text = error.what();
    while (!text.empty() && (text.back() == '\n' || text.back() == '.')) text.pop_back();
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

CLI::Validator wholeNumbers(std::int64_t minimum, std::int64_t maximum) {
    return CLI::Validator(
        [minimum, maximum](const std::string& text) -> std::string {
            const auto value = parseWholeNumber(text);
            if (value && *value >= minimum && *value <= maximum) return {};
            return "takes whole numbers from " + std::to_string(minimum) + " to " + std::to_string(maximum) +
                   ", not " + inQuotes(text);
        },
        "");
}

CLI::Validator oneOf(std::vector<std::string> words) {
    return CLI::Validator(
        [words = std::move(words)](const std::string& text) -> std::string {
            if (std::find(words.begin(), words.end(), text) != words.end()) return {};
            return "takes " + enumeration(words, "or") + ", not " + inQuotes(text);
        },
        "");
}

}  // namespace vireo
