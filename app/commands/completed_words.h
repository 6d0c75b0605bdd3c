// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_COMMANDS_COMPLETED_WORDS_H
#define VIREO_APP_COMMANDS_COMPLETED_WORDS_H

#include "app/commands/command_set.h"

#include <string>
#include <vector>

namespace vireo {

struct Completion {
    std::string word;
    std::string description;
};

/// What may stand at the end of a command line.
struct Completions {
    enum class Files { None, Any, Folders };
    Files files = Files::None;
    std::vector<Completion> words;  ///< Those that end in ":", "=" or "," can go on.
};

/// Completes a line as it was typed so far, up to the cursor: quotes and backslashes count as a shell's.
/// Words replace the last one whole and need no quoting.
Completions completionsOf(const CLI::App& program, Session& session, const std::string& line);

}  // namespace vireo

#endif
