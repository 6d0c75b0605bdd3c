// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_GUARDED_INPUT_H
#define VIREO_APP_MEDIA_GUARDED_INPUT_H

#include "app/media/ffmpeg_io.h"
#include "app/media/input_policy.h"

#include <memory>
#include <optional>
#include <string>

namespace vireo {

/// The only way in which FFmpeg's libraries open an input. What they would open beside it goes through here
/// too, or is refused by them.
class GuardedInput {
public:
    /// A file, or "-"; `stop` may be null. Throws Error.
    GuardedInput(const std::string& input, const InputPolicy& policy, const StopRequest* stop);
    GuardedInput(const GuardedInput&) = delete;
    GuardedInput& operator=(const GuardedInput&) = delete;
    ~GuardedInput();

    const std::string& name() const { return name_; }  ///< For sentences.
    AVFormatContext& context() const { return *context_; }
    const InputPolicy& policy() const { return policy_; }
    bool isPipe() const { return isPipe_; }
    bool isSeekable() const;

    /// Looks at packets until the streams are known. Returns FFmpeg's code, throws Error as below.
    int findStreams();

    /// Why reading failed with a code, in words. Throws Error where it asks for too much.
    std::string failure(int code) const;

    /// Throws Error where the input named what it may not read.
    void refuseReferences() const;

private:
    struct Guard;

    static int openReference(AVFormatContext* context, AVIOContext** io, const char* url, int flags,
                             AVDictionary** options);
    void openFile();
    void open(const std::string& url, const AVInputFormat& format);
    void refuseFormat(const AVInputFormat& format) const;

    const std::string name_;
    const InputPolicy policy_;
    const bool isPipe_;
    std::unique_ptr<Guard> guard_;
    std::optional<OpenFile> file_;  ///< Nothing of a pipe.
    std::unique_ptr<FileIo> io_;
    InputFormatPtr context_;
};

}  // namespace vireo

#endif
