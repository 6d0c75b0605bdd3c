// SPDX-License-Identifier: MIT
// What the command line said, before anything is made of it.
#ifndef VIREO_APP_COMMANDS_OPTIONS_H
#define VIREO_APP_COMMANDS_OPTIONS_H

#include "app/render/render_job.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vireo {

/// Options of every command.
struct GlobalOptions {
    std::optional<std::int32_t> applicationType;
    std::string language;
    std::string module;  ///< Empty: VIREO_MODULE, or where the program lies.
    bool quiet = false;
};

/// The options that make up the chain. They stand in the order in which they were given, since some belong to
/// the filter before them.
struct SettingsOption {
    enum class Kind { Filter, SettingsFile, SettingsBytes, LevelsFile, SaveSettingsBytes };
    Kind kind;
    std::string value;
};

struct ListOptions {
    bool json = false;
};

struct InfoOptions {
    std::string filter;
    bool json = false;
};

struct RenderOptions {
    std::vector<std::string> files;  ///< Inputs and, without `folder`, the output at the end.
    std::string folder;
    std::vector<SettingsOption> settings;
    std::string saveSettings;
    std::string filterFormat;

    std::string frames, start, duration;
    std::string interlaced;
    bool progressive = false;
    std::vector<std::string> encoderOptions;
    RenderJob job;  ///< The options that need no reading.
};

/// An option as it stood on the command line; flags have no value.
struct GivenOption {
    std::string name;
    std::optional<std::string> value;
};

struct FarmOptions {
    RenderOptions render;
    std::int64_t segments = 1;
    std::string part;  ///< "segments", "join" or both.
    bool keep = false;
    std::vector<GivenOption> given;  ///< Everything but the files, also the options of every command.
};

struct DialogOptions {
    std::string filter, image;
    std::string settings;      ///< Where to start from; empty: the filter's own defaults.
    std::string saveSettings;  ///< Empty: standard output.
    bool overwrite = false;
};

struct SheetOptions {
    std::string input, output;
    bool overwrite = false;
};

}  // namespace vireo

#endif
