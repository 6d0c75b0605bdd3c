// SPDX-License-Identifier: MIT
// Which files a command still reads and writes once it begins to parse what others made.
#ifndef VIREO_APP_COMMANDS_CONFINEMENT_H
#define VIREO_APP_COMMANDS_CONFINEMENT_H

#include "app/base/sandbox.h"
#include "app/commands/command_set.h"
#include "app/commands/options.h"

#include <string>
#include <vector>

namespace vireo {

class Confinement {
public:
    /// Settings and presets of a command.
    void add(const RenderOptions& options);

    /// A job's inputs and, unless it is a dry run, its outputs.
    void add(const RenderJob& job);

    /// A folder with everything in it, to be kept as the command likes.
    void keep(const std::filesystem::path& folder);

    /// Enters the protected mode unless the user refused it or a job needs what it does not let through.
    /// `child` is a process that may be ended. Whoever is in it stays there.
    void enter(const GlobalOptions& global, int child = 0);

private:
    struct Output {
        std::string name;
        bool overwrite, folderIsMade;
    };

    void allow(const std::filesystem::path& path, unsigned rights);
    void allowIn(const std::filesystem::path& folder, unsigned rights);
    void addInput(const RenderJob& job);
    void addOutput(const RenderJob& job);
    void allowOutputs();

    std::vector<SandboxPlace> places_;
    std::vector<std::string> inputs_;
    std::vector<Output> outputs_;
    bool usesHardware_ = false, hasTwoPasses_ = false;
};

}  // namespace vireo

#endif
