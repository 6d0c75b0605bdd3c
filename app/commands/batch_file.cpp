// SPDX-License-Identifier: MIT
#include "app/commands/batch_file.h"

#include "app/commands/render_options.h"
#include "engine/error.h"
#include "engine/text.h"

#include <algorithm>
#include <sstream>

namespace vireo {
namespace {

using Json = nlohmann::ordered_json;

BatchEntry entryOf(Json json) {
    if (json.is_object()) return {std::move(json), {}};
    return {{}, "it is no JSON object but " + json.dump(-1, ' ', false, Json::error_handler_t::replace)};
}

std::vector<BatchEntry> parseLines(const std::string& text) {
    std::vector<BatchEntry> entries;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (trimmed(line).empty()) continue;
        Json json = Json::parse(line, nullptr, false);
        entries.push_back(json.is_discarded() ? BatchEntry{{}, "it is no JSON: " + inQuotes(line)}
                                              : entryOf(std::move(json)));
    }
    return entries;
}

std::string textOf(const std::string& name, const Json& value) {
    if (value.is_string()) return value.get<std::string>();
    if (value.is_number()) return value.dump();
    throw Error(Fault::Usage, inQuotes(name) + " takes a text or a number, not " + value.dump());
}

/// One value, or all of an array.
std::vector<std::string> textsOf(const std::string& name, const Json& value) {
    if (!value.is_array()) return {textOf(name, value)};
    std::vector<std::string> texts;
    for (const Json& element : value) texts.push_back(textOf(name, element));
    return texts;
}

}  // namespace

std::vector<BatchEntry> parseBatch(const std::string& name, const std::string& text) {
    std::vector<BatchEntry> entries;
    try {
        Json json = Json::parse(text);
        if (!json.is_array()) json = Json::array({std::move(json)});
        for (Json& entry : json) entries.push_back(entryOf(std::move(entry)));
    } catch (const Json::parse_error& failure) {
        if (!trimmed(text).starts_with('{')) {
            const auto place =
                text.begin() + static_cast<std::ptrdiff_t>(std::min(failure.byte, text.size()));
            throw Error(Fault::BadText, name + " holds no jobs: it is no JSON in line " +
                                            std::to_string(1 + std::count(text.begin(), place, '\n')));
        }
        entries = parseLines(text);
    }
    if (entries.empty()) throw Error(Fault::BadText, name + " holds no jobs");
    return entries;
}

void readBatchEntry(const Json& entry, RenderWorkOptions& options) {
    options.ownCommand = std::make_unique<CLI::App>();
    CLI::App& command = *options.ownCommand;
    command.set_help_flag();
    addJobOptions(command, options);
    addRenderWorkOptions(command, options);

    std::vector<std::string> words, files, output;
    for (const auto& [name, value] : entry.items()) {
        if (name == "input") {
            files = textsOf(name, value);
            continue;
        }
        if (name == "output") {
            output = {textOf(name, value)};
            continue;
        }
        const CLI::Option* option =
            name.starts_with('-') ? nullptr : command.get_option_no_throw("--" + name);
        if (option == nullptr) throw Error(Fault::Usage, "there is no option " + inQuotes(name));
        if (value.is_null() || value == false) continue;
        const bool isFlag = option->get_expected_max() == 0;
        if (isFlag) {
            if (value != true) throw Error(Fault::Usage, inQuotes(name) + " takes true or false");
            words.push_back("--" + name);
            continue;
        }
        for (const std::string& text : textsOf(name, value))
            words.push_back(std::string("--").append(name).append("=").append(text));
    }
    if (files.empty()) throw Error(Fault::Usage, "it has no input");
    if (output.empty() != entry.contains("to"))
        throw Error(Fault::Usage, "it takes an output or a folder as \"to\"");
    words.emplace_back("--");
    words.insert(words.end(), files.begin(), files.end());
    words.insert(words.end(), output.begin(), output.end());
    std::reverse(words.begin(), words.end());  // the parser takes them from the back
    try {
        command.parse(std::move(words));
    } catch (const CLI::ParseError& failure) {
        throw Error(Fault::Usage, sentenceOf(failure));
    }
    options.given = givenOptions(command, options.settings);
}

}  // namespace vireo
