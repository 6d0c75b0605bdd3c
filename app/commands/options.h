// SPDX-License-Identifier: MIT
// What the command line said about a render, before anything is made of it.
#ifndef VIREO_APP_COMMANDS_OPTIONS_H
#define VIREO_APP_COMMANDS_OPTIONS_H

#include "app/media/render_job.h"

#include <optional>
#include <string>
#include <vector>

namespace vireo {

/// The options that make up the chain. They stand in the order in which they were given, since some belong to
/// the filter before them.
struct SettingsOption {
    enum class Kind { Filter, Preset, SettingsFile, SettingsBytes, LevelsFile, SaveSettingsBytes };
    Kind kind;
    std::string value;
};

struct RenderOptions {
    std::vector<std::string> files;  ///< Inputs and, without `folder`, the output at the end.
    std::string folder;
    std::vector<SettingsOption> settings;
    std::string saveSettings;
    std::string filterFormat;

    std::string frames, start, duration;
    std::string crop, scale, fps;
    std::string interlaced;
    bool progressive = false;
    std::string dither;
    std::vector<std::string> encoderOptions;
    std::string progress;
    std::optional<int> progressFile;
    std::vector<std::string> outputs;  ///< Of --output.
    RenderJob job;                     ///< The options that need no reading.
};

}  // namespace vireo

#endif
