// SPDX-License-Identifier: MIT
#include "app/base/log.h"

#include "engine/error.h"
#include "engine/files.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <mutex>

namespace vireo {
namespace {

struct Log {
    std::mutex mutex;
    std::ofstream file;
};

Log& theLog() {
    static Log log;
    return log;
}

/// "2026-05-01T12:00:00.250Z".
std::string timeText() {
    using namespace std::chrono;
    const auto now = time_point_cast<milliseconds>(system_clock::now());
    const std::time_t seconds = system_clock::to_time_t(now);
    std::tm parts{};
#if defined(_WIN32)
    gmtime_s(&parts, &seconds);
#else
    gmtime_r(&seconds, &parts);
#endif
    char date[32], text[48];
    std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &parts);
    std::snprintf(text, sizeof text, "%s.%03dZ", date,
                  static_cast<int>(now.time_since_epoch().count() % 1000));
    return text;
}

}  // namespace

void openLog(const std::string& path) {
    Log& log = theLog();
    const std::lock_guard lock(log.mutex);
    log.file.close();
    log.file.open(pathOf(path), std::ios::binary | std::ios::app);
    if (!log.file) throw Error("cannot write the log " + path);
}

void logLine(std::string_view text) {
    Log& log = theLog();
    const std::lock_guard lock(log.mutex);
    if (log.file.is_open()) log.file << timeText() + ' ' + std::string(text) + '\n' << std::flush;
}

}  // namespace vireo
