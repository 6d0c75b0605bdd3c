// SPDX-License-Identifier: MIT
// Many inputs: what folders hold, and the names of the outputs.
#ifndef VIREO_APP_COMMANDS_INPUT_LIST_H
#define VIREO_APP_COMMANDS_INPUT_LIST_H

#include <string>
#include <vector>

namespace vireo {

struct InputOptions {
    std::vector<std::string> inputs;  ///< Files, patterns and folders.
    std::string folder;               ///< Where outputs go.
    bool recursive = false;           ///< Also what folders hold in their folders.
    std::string name;                 ///< Of outputs, with fields; empty: the inputs' names.
};

struct RenderFiles {
    std::string input, output;
};

struct InputList {
    std::vector<RenderFiles> files;
    std::vector<std::string> passedOver;  ///< Files of folders that are neither pictures nor video.
};

/// Folders give the files that are pictures or video by their names, in order; never what is hidden, the
/// folder of the outputs or another one's output. Links to folders are not followed. Throws Error of wrong
/// usage, also where two outputs would have one name.
InputList listInputs(const InputOptions& options);

}  // namespace vireo

#endif
