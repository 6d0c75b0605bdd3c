// SPDX-License-Identifier: MIT
// The protected mode: from then on the process reads and writes what it was given, and nothing else.
#ifndef VIREO_APP_BASE_SANDBOX_H
#define VIREO_APP_BASE_SANDBOX_H

#include <filesystem>
#include <vector>

namespace vireo {

/// A file, or a folder with all that lies below it, and what may be done there.
struct SandboxPlace {
    enum Right : unsigned {
        Read = 1,      ///< Files.
        List = 2,      ///< Names of a folder.
        Write = 4,     ///< Into files that are there.
        Appear = 8,    ///< Files come here from another folder.
        Replace = 16,  ///< They may take the places of others.
        Clear = 32,    ///< Empty folders go.
        Keep = 64,     ///< Everything that files and folders of its own need.
    };

    std::filesystem::path path;
    unsigned rights = 0;
};

enum class SandboxStrength {
    None,
    Partial,  ///< No network, program or process; but files as without, at least where something is written.
    Full,
};

/// What this build and this system have.
SandboxStrength sandboxStrength();

/// Enters it as far as the system has it; nothing leads back. What system libraries read stays readable. Of
/// other processes only `child` may be ended. To be called once, before there are threads.
void enterSandbox(const std::vector<SandboxPlace>& places, int child);

}  // namespace vireo

#endif
