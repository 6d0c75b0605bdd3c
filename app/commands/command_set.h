// SPDX-License-Identifier: MIT
// How a command enters the command line: it describes its options and says what runs it.
#ifndef VIREO_APP_COMMANDS_COMMAND_SET_H
#define VIREO_APP_COMMANDS_COMMAND_SET_H

#include "engine/catalogue/catalogue.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace vireo {

/// Options of every command.
struct GlobalOptions {
    std::optional<std::int32_t> applicationType;
    std::string language;
    std::string module;  ///< Empty: VIREO_MODULE, or where the program lies.
    std::string log;     ///< Empty: none.
    bool quiet = false;
    bool noSandbox = false;
};

/// What a command works with.
class Session {
public:
    explicit Session(const GlobalOptions& global) : global_(global) {}

    const GlobalOptions& global() const { return global_; }

    /// The filters of the module, which is loaded when they are first asked for. Throws.
    const Catalogue& catalogue();

private:
    const GlobalOptions& global_;
    std::optional<hosting::MetaPlugin> module_;
    std::optional<Catalogue> catalogue_;
};

/// Runs a command whose options were read. Returns the exit status; throws Error, or any std::exception,
/// where it fails.
using RunCommand = std::function<int(Session&)>;

/// The commands under a program.
///
/// Help, manual page and completion are made of what the parser knows. Names of values matter there:
/// FILE, FOLDER, FILTER, FILTER:... and PRESET are completed as such, "on|off" as a choice. Options without a
/// description are not shown.
class CommandSet {
public:
    explicit CommandSet(CLI::App& program) : program_(program) {}

    const CLI::App& program() const { return program_; }

    /// A command to which options can be added.
    CLI::App& add(const std::string& name, const std::string& description, RunCommand run) {
        return add(program_, name, description, std::move(run));
    }

    /// A command under another one.
    CLI::App& add(CLI::App& parent, const std::string& name, const std::string& description, RunCommand run);

    /// A command that has others under it, one of which must be given.
    CLI::App& addFamily(const std::string& name, const std::string& description);

    /// What runs the command that was given; null where none was.
    const RunCommand* chosen() const;

private:
    CLI::App& program_;
    std::vector<std::pair<CLI::App*, RunCommand>> commands_;
};

inline constexpr std::int64_t largestNumber = std::numeric_limits<std::int32_t>::max();

/// What the parser complains of, on one line and without its full stop.
std::string sentenceOf(const CLI::ParseError& error);

/// Lets an option take the whole numbers of a range.
CLI::Validator wholeNumbers(std::int64_t minimum, std::int64_t maximum);

/// Lets an option take one of some words.
CLI::Validator oneOf(std::vector<std::string> words);

}  // namespace vireo

#endif
