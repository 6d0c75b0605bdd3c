// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_COMMANDS_CHAIN_OPTIONS_H
#define VIREO_APP_COMMANDS_CHAIN_OPTIONS_H

#include "app/commands/options.h"
#include "engine/settings/chain_settings.h"

#include <string>
#include <vector>

namespace vireo {

/// Bytes of one filter's settings handle that are to be written.
struct SavedBytes {
    std::size_t filter;
    std::string path;
};

/// The chain that the command line describes, and what of it is to be saved.
struct ChainOptions {
    std::vector<FilterSettings> filters;
    std::string
        settingsText;  ///< What --save-settings writes: a file that was loaded and not changed, as it was.
    std::vector<SavedBytes> savedBytes;
};

/// Reads the options that make up the chain. Throws Error, also where they name no filter.
ChainOptions readChain(const Catalogue& catalogue, const RenderOptions& options);

/// Refuses what saveSettings() could only refuse after the work: names that are taken. Throws Error.
void refuseTakenNames(const ChainOptions& chain, const RenderOptions& options);

/// Writes what --save-settings and --save-settings-bytes ask for. Throws Error.
void saveSettings(const ChainOptions& chain, const RenderOptions& options);

}  // namespace vireo

#endif
