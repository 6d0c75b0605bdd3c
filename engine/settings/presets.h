// SPDX-License-Identifier: MIT
// Presets: settings files that lie in known folders and go by their names.
#ifndef VIREO_ENGINE_SETTINGS_PRESETS_H
#define VIREO_ENGINE_SETTINGS_PRESETS_H

#include <string>
#include <vector>

namespace vireo {

struct Preset {
    std::string name;  ///< The file's, without .json.
    std::string file;
};

/// All presets by name. One of the user's own stands for one that came with the program under the same name.
std::vector<Preset> allPresets();

/// Those that came with the program.
std::vector<Preset> shippedPresets();

/// The preset of a name or of its unambiguous beginning, without case. Throws Error.
Preset findPreset(const std::string& name);

}  // namespace vireo

#endif
