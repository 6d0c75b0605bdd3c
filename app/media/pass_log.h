// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_PASS_LOG_H
#define VIREO_APP_MEDIA_PASS_LOG_H

#include <filesystem>
#include <string>

namespace vireo {

/// What the first of two passes found out for the second.
class PassLog {
public:
    PassLog() = default;
    PassLog(const PassLog&) = delete;
    PassLog& operator=(const PassLog&) = delete;
    ~PassLog();  ///< Removes the file's folder.

    /// For encoders that write a file: one in a temporary folder. Throws Error.
    std::string file();

    std::string statistics;  ///< Of the other encoders.

private:
    std::filesystem::path folder_;
};

}  // namespace vireo

#endif
