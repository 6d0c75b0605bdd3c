// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_BASE_LOG_H
#define VIREO_APP_BASE_LOG_H

#include <string>
#include <string_view>

namespace vireo {

/// From now on what is said is kept in a file as well, behind what it holds. Throws Error.
void openLog(const std::string& path);

/// Adds a line with the time; does nothing where no log is open. Any thread may call.
void logLine(std::string_view text);

}  // namespace vireo

#endif
