// SPDX-License-Identifier: MIT
#include "app/media/pass_log.h"

#include "app/base/files.h"
#include "engine/error.h"

#include <random>

namespace vireo {

PassLog::~PassLog() {
    std::error_code error;
    if (!folder_.empty()) std::filesystem::remove_all(folder_, error);
}

std::string PassLog::file() {
    std::error_code error;
    for (std::random_device random; folder_.empty();) {
        const std::filesystem::path folder =
            std::filesystem::temp_directory_path(error) / ("vireo-passes-" + std::to_string(random()));
        if (error) break;
        if (std::filesystem::create_directory(folder, error)) folder_ = folder;
        if (error) break;
    }
    if (folder_.empty()) throw Error("cannot make a temporary folder for the first pass: " + reasonOf(error));
    return utf8Of(folder_ / "passes.log");
}

}  // namespace vireo
