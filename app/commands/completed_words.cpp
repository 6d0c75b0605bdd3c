// SPDX-License-Identifier: MIT
#include "app/commands/completed_words.h"

#include "app/base/files.h"
#include "app/commands/help.h"
#include "engine/error.h"
#include "engine/settings/filter_settings.h"
#include "engine/settings/parameter_value.h"
#include "engine/settings/presets.h"
#include "engine/settings/settings_file.h"

#include <algorithm>
#include <cctype>

namespace vireo {
namespace {

/// The words of a line; the last one is what is being typed, and empty behind a blank.
std::vector<std::string> shellWords(const std::string& line) {
    std::vector<std::string> words(1);
    char quote = '\0';
    bool isOpen = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char character = line[i];
        if (quote == '\0' && (character == ' ' || character == '\t')) {
            if (isOpen) words.emplace_back();
            isOpen = false;
            continue;
        }
        isOpen = true;
        if (quote == '\0' && (character == '"' || character == '\'')) {
            quote = character;
        } else if (character == quote) {
            quote = '\0';
        } else if (character == '\\' && quote != '\'' && i + 1 < line.size()) {
            words.back() += line[++i];
        } else {
            words.back() += character;
        }
    }
    return words;
}

/// A name that needs no quotes in a shell and is found all the same.
std::string bareName(const std::string& name) {
    std::string bare;
    for (const char character : name) {
        if (std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '.' || character == '-')
            bare += character;
    }
    return bare;
}

std::string bareName(const hosting::Filter& filter) {
    const std::string bare = bareName(filter.properties.name);
    return comparableName(bare) == comparableName(filter.properties.name) ? bare
                                                                          : keySegment(filter.properties);
}

bool begins(const std::string& name, std::string_view typed) {
    return comparableName(name).starts_with(comparableName(typed));
}

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> pieces(1);
    for (const char character : text) {
        if (character == separator) {
            pieces.emplace_back();
        } else {
            pieces.back() += character;
        }
    }
    return pieces;
}

class Completer {
public:
    Completer(const CLI::App& program, Session& session, std::vector<std::string> words)
        : program_(program), session_(session), words_(std::move(words)), typed_(words_.back()) {}

    Completions complete() {
        const CLI::Option* option = readWords();
        if (option != nullptr) {
            completeValue(option->get_type_name());
        } else if (const std::size_t equals = typed_.find('=');
                   typed_.starts_with("--") && equals != std::string::npos) {
            option = optionNamed(typed_.substr(0, equals));
            before_ = typed_.substr(0, equals + 1);
            typed_.erase(0, equals + 1);
            if (option != nullptr) completeValue(option->get_type_name());
        } else if (typed_.starts_with('-')) {
            addOptions(*command_);
            if (command_ != &program_) addOptions(program_);
        } else if (!shownCommands(*command_).empty()) {
            for (const CLI::App* command : shownCommands(*command_))
                add(command->get_name(), command->get_description());
        } else {
            completeArgument();
        }
        return std::move(completions_);
    }

private:
    /// Finds the command and returns the option whose value is being typed, or null.
    const CLI::Option* readWords() {
        const CLI::Option* waiting = nullptr;
        for (std::size_t i = 1; i + 1 < words_.size(); ++i) {
            const std::string& word = words_[i];
            if (waiting != nullptr) {
                waiting = nullptr;
            } else if (word.starts_with('-') && word.size() > 1) {
                const CLI::Option* option = optionNamed(word);
                if (option != nullptr && !option->get_type_name().empty()) waiting = option;
            } else if (const CLI::App* command = commandNamed(word); command != nullptr) {
                command_ = command;
            } else {
                ++arguments_;
            }
        }
        return waiting;
    }

    const CLI::App* commandNamed(const std::string& name) const {
        const auto commands =
            command_->get_subcommands([&](const CLI::App* c) { return c->get_name() == name; });
        return commands.empty() ? nullptr : commands.front();
    }

    const CLI::Option* optionNamed(const std::string& name) const {
        const CLI::Option* option = command_->get_option_no_throw(name);
        return option != nullptr ? option : program_.get_option_no_throw(name);
    }

    void addOptions(const CLI::App& command) {
        for (const OptionGroup& group : optionGroups(command)) {
            for (const CLI::Option* option : group.options) {
                // A long name says more.
                const bool isShort = option->get_lnames().empty();
                const std::string name =
                    isShort ? '-' + option->get_snames().front() : "--" + option->get_lnames().front();
                if (typed_ == "-" && !option->get_snames().empty())
                    add('-' + option->get_snames().front(), option->get_description());
                if (name.starts_with(typed_)) addAsIs(name, option->get_description());
            }
        }
    }

    void completeArgument() {
        const auto arguments = positionals(*command_);
        if (arguments.empty()) return;
        const CLI::Option* argument = arguments[std::min(arguments_, arguments.size() - 1)];
        const bool isLastOnly = argument->get_expected_max() == 1 && arguments_ >= arguments.size();
        if (!isLastOnly) completeValue(argument->get_type_name());
    }

    /// `kind` is the name of the value, as help shows it.
    void completeValue(const std::string& kind) {
        if (kind == "FILE" || kind.starts_with("IN") || kind == "OUT" || kind == "[OUT]") {
            completions_.files = Completions::Files::Any;
        } else if (kind == "FOLDER") {
            completions_.files = Completions::Files::Folders;
        } else if (kind == "FILTER") {
            for (const hosting::Filter& filter : session_.catalogue().filters())
                add(bareName(filter), aboutFilter(filter));
        } else if (kind == "FILTER:...") {
            completeFilterText();
        } else if (kind == "PRESET") {
            for (const Preset& preset : allPresets()) addPreset(preset);
        } else if (kind.find('|') != std::string::npos) {
            for (const std::string& choice : split(kind, '|')) add(choice, "");
        }
    }

    void addPreset(const Preset& preset) {
        try {
            add(preset.name, settingsDescription(preset.file, readFile(preset.file)));
        } catch (const Error&) {
            add(preset.name, "damaged");
        }
    }

    void completeFilterText() {
        const std::size_t colon = typed_.find(':');
        if (colon == std::string::npos) {
            for (const hosting::Filter& filter : session_.catalogue().filters())
                add(bareName(filter) + ':', aboutFilter(filter));
            return;
        }
        const FilterSettings settings(session_.catalogue().find(std::string_view(typed_).substr(0, colon)));
        std::size_t piece = colon + 1;
        int depth = 0;
        for (std::size_t i = piece; i < typed_.size(); ++i) {
            depth += (typed_[i] == '(' ? 1 : 0) - (typed_[i] == ')' ? 1 : 0);
            if (typed_[i] == ',' && depth == 0) piece = i + 1;
        }
        const std::size_t equals = typed_.find('=', piece);
        const std::string name = typed_.substr(piece, equals - piece);
        before_ = typed_.substr(0, equals == std::string::npos ? piece : equals + 1);
        typed_ = equals == std::string::npos ? name : typed_.substr(equals + 1);
        if (equals == std::string::npos) {
            addParameters(settings.filter());
        } else {
            addValues(settings, name);
        }
    }

    void addParameters(const hosting::Filter& filter) {
        for (const hosting::Parameter& parameter : filter.properties.parameters) {
            const hosting::ValueRange range = hosting::valueRange(parameter);
            add(bareName(parameter.name) + '=',
                parameter.kind == hosting::ParameterKind::Boolean ? "on or off"
                : parameter.kind == hosting::ParameterKind::Color
                    ? "a colour"
                    : std::to_string(range.minimum) + " to " + std::to_string(range.maximum));
        }
        add("from=", "a time, included");
        add("to=", "a time, excluded");
        add("mix=", "per cent of the result");
    }

    /// What a parameter can be, or for numbers and colours what it is when nothing is said.
    void addValues(const FilterSettings& settings, const std::string& name) {
        const auto& parameters = settings.filter().properties.parameters;
        std::vector<Names> names;
        for (const hosting::Parameter& parameter : parameters) names.push_back({parameter.name});
        const auto matches = matchName(name, names);
        if (matches.size() != 1) return;
        const hosting::Parameter& parameter = parameters[matches.front()];
        if (parameter.kind == hosting::ParameterKind::Boolean) {
            add("on", "");
            add("off", "");
        } else {
            add(valueText(parameter, hosting::readValue(parameter, settings.record({}))), "default");
        }
    }

    static std::string aboutFilter(const hosting::Filter& filter) { return filter.properties.name; }

    void add(const std::string& word, const std::string& description) {
        if (begins(word, typed_)) addAsIs(word, description);
    }

    void addAsIs(const std::string& word, const std::string& description) {
        completions_.words.push_back({before_ + word, description});
    }

    const CLI::App& program_;
    Session& session_;
    const std::vector<std::string> words_;
    const CLI::App* command_ = &program_;
    std::size_t arguments_ = 0;  ///< Positional ones before the word.
    std::string typed_;          ///< Of the word, what is being completed,
    std::string before_;         ///< and what stands before it.
    Completions completions_;
};

}  // namespace

Completions completionsOf(const CLI::App& program, Session& session, const std::string& line) {
    return Completer(program, session, shellWords(line)).complete();
}

}  // namespace vireo
