// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_COMMANDS_COMMAND_LINE_H
#define VIREO_APP_COMMANDS_COMMAND_LINE_H

#include <string>
#include <vector>

namespace vireo {

/// Runs the program with the arguments behind its name, in UTF-8, and returns its exit status: 0 done,
/// 1 failed, 2 wrong usage, 130 interrupted, 143 terminated. Results go to standard output, everything else
/// to standard error.
int runCommandLine(std::vector<std::string> arguments);

}  // namespace vireo

#endif
