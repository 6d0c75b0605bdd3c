// SPDX-License-Identifier: MIT
// Files of jobs.
#ifndef VIREO_APP_COMMANDS_BATCH_FILE_H
#define VIREO_APP_COMMANDS_BATCH_FILE_H

#include "app/commands/render_work.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace vireo {

struct BatchEntry {
    nlohmann::ordered_json json;  ///< An object.
    std::string error;            ///< Why it is none.
};

/// The jobs of an array, or an object a line. `name` is that of the file. Throws Error where it holds
/// neither.
std::vector<BatchEntry> parseBatch(const std::string& name, const std::string& text);

/// Reads an object as the command line of vireo render with the same options. Throws Error of wrong usage.
void readBatchEntry(const nlohmann::ordered_json& entry, RenderWorkOptions& options);

}  // namespace vireo

#endif
