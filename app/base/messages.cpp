// SPDX-License-Identifier: MIT
#include "app/base/messages.h"

#include "app/base/log.h"
#include "app/base/terminal.h"

#include <fcntl.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <iostream>

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

namespace vireo {
namespace {

using Json = nlohmann::ordered_json;
using std::chrono::milliseconds;

constexpr milliseconds terminalPause(200), objectPause(500), linePause(10000);

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

const char* phaseName(Phase phase) {
    switch (phase) {
        case Phase::Open: return "open";
        case Phase::Render: return "render";
        case Phase::Finish: return "finish";
        case Phase::Done: return "done";
        case Phase::Failed: break;
    }
    return "failed";
}

double hundredths(double value) { return std::round(value * 100) / 100; }

}  // namespace

bool isWritable(int file) {
#if defined(_WIN32)
    return _get_osfhandle(file) != -1;
#else
    const int flags = fcntl(file, F_GETFL);
    return flags >= 0 && (flags & O_ACCMODE) != O_RDONLY;
#endif
}

Messages::Messages(bool quiet, ProgressStyle progress, std::string output)
    : quiet_(quiet),
      terminal_(Terminal::errors().isCapable()),
      style_(progress),
      output_(std::move(output)) {}

Messages::~Messages() { clearProgress(); }

void Messages::notice(MessageCode code, const std::string& sentence) {
    say("vireo: ", "vireo: ", sentence, &code);
}

void Messages::warning(MessageCode code, const std::string& sentence) {
    say("vireo: " + Terminal::errors().styled(Style::Warning, "warning:") + ' ', "vireo: warning: ", sentence,
        &code);
}

void Messages::tell(const std::string& sentence) { say("vireo: ", "vireo: ", sentence, nullptr); }

void Messages::error(const std::string& sentence) {
    const std::lock_guard lock(mutex_);
    write({"vireo: " + sentence + '.',
           Terminal::errors().styled(Style::Error, "vireo:") + ' ' + sentence + ".\n"});
}

void Messages::hold() {
    const std::lock_guard lock(mutex_);
    holds_ = true;
}

void Messages::release(Messages& held) {
    const std::scoped_lock lock(mutex_, held.mutex_);
    for (Line& line : held.held_) write(std::move(line));
    held.held_.clear();
}

std::vector<Message> Messages::said() const {
    const std::lock_guard lock(mutex_);
    return said_;
}

void Messages::enter(Phase phase) {
    const std::lock_guard lock(mutex_);
    if (isInPart_ && phase != Phase::Render && phase != Phase::Failed) return;
    if (phase == Phase::Failed && phase_ == phase) return;
    const bool isAgain = isInPart_ && phase == phase_;
    phase_ = phase;
    if (phase == Phase::Open) frames_ = 0;
    if (phase == Phase::Render) start_ = Clock::now();
    if (isAgain) return;
    lastShown_ = lastLogged_ = Clock::now();
    if (style_.json) writeObject();
}

void Messages::progress(std::int64_t frames, std::int64_t total) {
    const std::lock_guard lock(mutex_);
    frames_ = before_ + frames;
    total_ = isInPart_ ? whole_ : total;
    const Clock::time_point now = Clock::now();
    if (now - lastLogged_ >= linePause) {
        lastLogged_ = now;
        logLine(progressText());
    }
    showProgress(now);
}

void Messages::showProgress(Clock::time_point now) {
    if ((quiet_ || holds_) && !style_.json) return;
    if (now - lastShown_ < (style_.json ? objectPause : terminal_ ? terminalPause : linePause)) return;
    lastShown_ = now;
    if (style_.json) {
        writeObject();
    } else if (terminal_) {
        std::fprintf(stderr, "\r\033[K%s", Terminal::errors().styled(Style::Faint, progressText()).c_str());
        std::fflush(stderr);
        progressShown_ = true;
    } else {
        std::fprintf(stderr, "%s\n", progressText().c_str());
    }
}

void Messages::beginPart(std::int64_t before, std::int64_t total) {
    const std::lock_guard lock(mutex_);
    isInPart_ = true;
    before_ = before;
    whole_ = total;
}

void Messages::endParts() {
    const std::lock_guard lock(mutex_);
    isInPart_ = false;
    before_ = 0;
}

void Messages::answer() {
    const std::lock_guard lock(mutex_);
    if (style_.json) {
        writeObject();
    } else {
        clearProgress();
        std::fprintf(stderr, "%s\n", progressText().c_str());
    }
}

double Messages::framesPerSecond() const {
    const double seconds = std::chrono::duration<double>(Clock::now() - start_).count();
    return seconds > 0 ? static_cast<double>(frames_ - before_) / seconds : 0;
}

/// Negative where nothing tells.
double Messages::secondsLeft() const {
    const double rate = framesPerSecond();
    if (phase_ == Phase::Done) return 0;
    return total_ > 0 && rate > 0 ? static_cast<double>(std::max<std::int64_t>(0, total_ - frames_)) / rate
                                  : -1;
}

std::string Messages::progressText() const {
    if (phase_ == Phase::Open) return "opening the input of " + output_;
    if (phase_ == Phase::Finish) return "finishing " + output_;
    char text[128];
    if (total_ > 0 && secondsLeft() >= 0) {
        std::snprintf(text, sizeof text, "frame %lld of %lld, %lld %%, %.1f fps, %s left",
                      static_cast<long long>(frames_), static_cast<long long>(total_),
                      static_cast<long long>(100 * frames_ / total_), framesPerSecond(),
                      clockTime(std::llround(secondsLeft())).c_str());
    } else {
        std::snprintf(text, sizeof text, "frame %lld, %.1f fps", static_cast<long long>(frames_),
                      framesPerSecond());
    }
    return text;
}

std::string Messages::progressJson() const {
    const bool isTimed = phase_ != Phase::Open && frames_ > 0;
    const Json object{
        {"phase", phaseName(phase_)},
        {"frame", frames_},
        {"of", total_ > 0 ? Json(total_) : Json()},
        {"framesPerSecond", isTimed ? Json(hundredths(framesPerSecond())) : Json()},
        {"secondsLeft", isTimed && secondsLeft() >= 0 ? Json(hundredths(secondsLeft())) : Json()},
        {"output", output_}};
    return object.dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// Whoever stops listening does not stop the work.
void Messages::writeObject() {
    const std::string text = progressJson() + '\n';
    std::size_t done = 0;
    while (done < text.size()) {
        const auto count =
            ::write(style_.file, text.data() + done, static_cast<unsigned>(text.size() - done));
        if (count < 0 && errno != EINTR) return;
        if (count > 0) done += static_cast<std::size_t>(count);
    }
}

void Messages::say(const std::string& shownPrefix, const std::string& prefix, const std::string& sentence,
                   const MessageCode* code) {
    const std::lock_guard lock(mutex_);
    if (code != nullptr) {
        const Message message{*code, sentence};
        // A second pass, or a second output, tells nothing new by it.
        if (std::find(said_.begin(), said_.end(), message) != said_.end()) return;
        said_.push_back(message);
    }
    write({prefix + sentence + '.' + (code != nullptr ? " [" + std::string(codeText(*code)) + ']' : ""),
           quiet_ ? "" : shownPrefix + sentence + ".\n"});
}

void Messages::write(Line line) {
    if (holds_) {
        held_.push_back(std::move(line));
        return;
    }
    logLine(line.logged);
    if (line.shown.empty()) return;
    clearProgress();
    std::fputs(line.shown.c_str(), stderr);
}

void Messages::clearProgress() {
    if (progressShown_) std::fputs("\r\033[K", stderr);
    progressShown_ = false;
}

void printError(const std::string& sentence) {
    logLine("vireo: " + sentence + '.');
    std::cerr << Terminal::errors().styled(Style::Error, "vireo:") << ' ' << sentence << ".\n";
}

}  // namespace vireo
