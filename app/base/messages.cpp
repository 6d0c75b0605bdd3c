// SPDX-License-Identifier: MIT
#include "app/base/messages.h"

#include "app/base/terminal.h"

#include <cstdio>
#include <iostream>

namespace vireo {
namespace {

std::string clockTime(std::int64_t seconds) {
    char text[32];
    if (seconds >= 3600) {
        std::snprintf(text, sizeof text, "%lld:%02d:%02d", static_cast<long long>(seconds / 3600),
                      static_cast<int>(seconds / 60 % 60), static_cast<int>(seconds % 60));
    } else {
        std::snprintf(text, sizeof text, "%d:%02d", static_cast<int>(seconds / 60),
                      static_cast<int>(seconds % 60));
    }
    return text;
}

}  // namespace

Messages::Messages(bool quiet) : quiet_(quiet), terminal_(Terminal::errors().isCapable()) {}

Messages::~Messages() { clearProgress(); }

void Messages::notice(const std::string& sentence) { line("vireo: " + sentence + ".\n"); }

void Messages::warning(const std::string& sentence) {
    line("vireo: " + Terminal::errors().styled(Style::Warning, "warning:") + ' ' + sentence + ".\n");
}

void Messages::progress(std::int64_t frames, std::int64_t total) {
    if (quiet_) return;
    const std::lock_guard lock(mutex_);
    const Clock::time_point now = Clock::now();
    if (now - lastProgress_ < (terminal_ ? std::chrono::milliseconds(200) : std::chrono::seconds(10))) return;
    lastProgress_ = now;

    const double seconds = std::chrono::duration<double>(now - start_).count();
    const double rate = static_cast<double>(frames) / seconds;
    char text[128];
    if (total > 0 && frames > 0) {
        const auto left = static_cast<std::int64_t>(static_cast<double>(total - frames) / rate + 0.5);
        std::snprintf(text, sizeof text, "frame %lld of %lld, %lld %%, %.1f fps, %s left",
                      static_cast<long long>(frames), static_cast<long long>(total),
                      static_cast<long long>(100 * frames / total), rate, clockTime(left).c_str());
    } else {
        std::snprintf(text, sizeof text, "frame %lld, %.1f fps", static_cast<long long>(frames), rate);
    }
    if (terminal_) {
        std::fprintf(stderr, "\r\033[K%s", Terminal::errors().styled(Style::Faint, text).c_str());
        std::fflush(stderr);
        progressShown_ = true;
    } else {
        std::fprintf(stderr, "%s\n", text);
    }
}

void Messages::line(const std::string& text) {
    if (quiet_) return;
    const std::lock_guard lock(mutex_);
    clearProgress();
    std::fputs(text.c_str(), stderr);
}

void Messages::clearProgress() {
    if (progressShown_) std::fputs("\r\033[K", stderr);
    progressShown_ = false;
}

void printError(const std::string& sentence) {
    std::cerr << Terminal::errors().styled(Style::Error, "vireo:") << ' ' << sentence << ".\n";
}

}  // namespace vireo
