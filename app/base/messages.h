// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_BASE_MESSAGES_H
#define VIREO_APP_BASE_MESSAGES_H

#include "app/base/message_code.h"

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace vireo {

/// How progress is told.
struct ProgressStyle {
    bool json = false;  ///< One object a line, for programs, also where nothing else is said.
    int file = 2;       ///< The descriptor that gets the objects.
};

/// Whether a descriptor is there and may be written to.
bool isWritable(int file);

struct Message {
    MessageCode code;
    std::string sentence;

    bool operator==(const Message&) const = default;
};

/// What a render does at a time.
enum class Phase { Open, Render, Finish, Done, Failed };

/// Notices, warnings and the progress of a render, on standard error. On a terminal the progress is one line
/// that is written over, elsewhere a line every few seconds. Any thread may call.
class Messages {
public:
    /// `output` is the name that progress is told of.
    explicit Messages(bool quiet, ProgressStyle progress = {}, std::string output = {});
    Messages(const Messages&) = delete;
    Messages& operator=(const Messages&) = delete;
    ~Messages();  ///< Removes the progress line.

    /// Sentences without a full stop. A notice or warning that was said is not said again.
    void notice(MessageCode code, const std::string& sentence);
    void warning(MessageCode code, const std::string& sentence);
    void tell(const std::string& sentence);  ///< Nothing that a program would want to know.

    /// Is said even where nothing else is.
    void error(const std::string& sentence);

    /// From now on sentences wait until another one says them, and no line of progress is shown.
    void hold();

    /// Says what another one holds.
    void release(Messages& held);

    /// The notices and warnings so far.
    std::vector<Message> said() const;

    void enter(Phase phase);

    /// `total` is 0 where unknown.
    void progress(std::int64_t frames, std::int64_t total);

    /// A part of the work begins: `before` frames of all the `total` are done. Phases and frames are told of
    /// the whole until the parts end.
    void beginPart(std::int64_t before, std::int64_t total);
    void endParts();

    /// Tells the progress now, even where nothing else is said.
    void answer();

private:
    using Clock = std::chrono::steady_clock;

    /// What the log gets and what people see; nothing where they asked for quiet.
    struct Line {
        std::string logged, shown;
    };

    /// `prefix` is what a file shows, without colours.
    void say(const std::string& shownPrefix, const std::string& prefix, const std::string& sentence,
             const MessageCode* code);
    void write(Line line);
    void showProgress(Clock::time_point now);
    std::string progressText() const;
    std::string progressJson() const;
    double framesPerSecond() const;
    double secondsLeft() const;
    void writeObject();
    void clearProgress();

    mutable std::mutex mutex_;
    const bool quiet_;
    const bool terminal_;
    ProgressStyle style_;
    const std::string output_;
    std::vector<Message> said_;
    bool holds_ = false;
    std::vector<Line> held_;

    Phase phase_ = Phase::Open;
    std::int64_t frames_ = 0;
    std::int64_t total_ = 0;
    bool isInPart_ = false;
    std::int64_t before_ = 0, whole_ = 0;
    Clock::time_point start_ = Clock::now();  ///< Of rendering.
    Clock::time_point lastShown_ = start_;
    Clock::time_point lastLogged_ = start_;
    bool progressShown_ = false;
};

/// "vireo: SENTENCE." on a line of standard error.
void printError(const std::string& sentence);

}  // namespace vireo

#endif
