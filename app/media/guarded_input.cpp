// SPDX-License-Identifier: MIT
#include "app/media/guarded_input.h"

#include "app/base/files.h"
#include "app/media/decoder_complaints.h"
#include "app/media/decoder_limits.h"
#include "app/media/movie_tables.h"
#include "app/media/referencing_formats.h"
#include "engine/error.h"

extern "C" {
#include <libavutil/avstring.h>
#include <libavutil/mem.h>
}

#include <optional>
#include <vector>

namespace vireo {
namespace {

constexpr int mostStreams = 500;

// What a reference is opened with; `crypto` deciphers a file, `data` is its own content.
constexpr char localProtocols[] = "file,crypto,data";

char* duplicated(const std::string& text) {
    char* const copy = av_strdup(text.c_str());
    if (copy == nullptr) throw std::bad_alloc();
    return copy;
}

/// A file's name in what a format asks for; nothing where it is an address.
std::optional<std::string> fileOf(std::string_view url) {
    for (const std::string_view prefix : {"crypto:", "crypto+", "file:"}) {
        if (url.starts_with(prefix)) url.remove_prefix(prefix.size());
    }
    const std::string name(url);
    const char* const protocol = avio_find_protocol_name(name.c_str());
    if (protocol == nullptr || std::string_view(protocol) != "file" || isAddress(name)) return std::nullopt;
    return name;
}

}  // namespace

/// What FFmpeg's callback knows of an input.
struct GuardedInput::Guard {
    std::optional<InputFolder> folder;  ///< Nothing of a pipe.
    bool allows = false;
    std::string refused;  ///< The first thing that was asked for and not allowed.
    std::string reason;   ///< Why, where no option allows it.

    int refuse(const std::string& url, const std::string& why = {}) {
        if (refused.empty()) {
            refused = url;
            reason = why;
        }
        return AVERROR(EACCES);
    }
};

GuardedInput::GuardedInput(const std::string& input, const InputPolicy& policy, const StopRequest* stop)
    : name_(input == "-" ? "standard input" : input),
      policy_(policy),
      isPipe_(input == "-"),
      guard_(std::make_unique<Guard>()) {
    static const StopRequest none;
    const StopRequest& stopOrNone = stop != nullptr ? *stop : none;
    std::string url;
    if (!isPipe_) {
        refuseAddress(input);
        guard_->folder.emplace(pathOf(input));
        guard_->allows = policy.references;
        url = fileUrl(input);
        openFile();
    }
    io_ = std::make_unique<FileIo>(isPipe_ ? 0 : file_->descriptor(), FileIo::Direction::Read, stopOrNone,
                                   !isPipe_ && file_->isSeekable());
    AVIOContext* const io = io_->context();
    const AVInputFormat* format = nullptr;
    const int probed = av_probe_input_buffer2(io, &format, url.c_str(), nullptr, 0, 0);
    throwIfInterrupted();
    check(probed, "cannot open " + name_);
    refuseFormat(*format);
    const Reach reach = reachOf(*format).reach;
    if (reach == Reach::List) checkFileList(input, *guard_->folder);
    const std::string fault = reach == Reach::Files ? playlistFault(pathOf(input)) : std::string();
    if (!fault.empty()) throw Error(name_ + ' ' + fault);

    const bool isMovie =
        (io->seekable & AVIO_SEEKABLE_NORMAL) != 0 && av_match_name("mov", format->name) != 0;
    if (isMovie && announcesTooManySamples(pathOf(input)))
        throw Error(name_ + " announces more frames than a file of its size can hold");

    AVFormatContext* context = avformat_alloc_context();
    if (context == nullptr) throw std::bad_alloc();
    // Closing it leaves the file to this object.
    context->flags |= AVFMT_FLAG_CUSTOM_IO;
    context_.reset(context);
    context->interrupt_callback = interruptBy(stopOrNone);
    context->pb = io;
    open(url, *format);
}

GuardedInput::~GuardedInput() = default;

void GuardedInput::openFile() {
    const std::filesystem::path path = pathOf(name_);
    try {
        file_.emplace(path);
    } catch (const std::system_error& failure) {
        throwIfInterrupted();
        const bool isTaken = failure.code() == std::errc::permission_denied && isHeld(path);
        throw Error("cannot open " + name_ + ": " +
                    (isTaken ? "another program has it open" : reasonOf(failure.code())));
    }
}

void GuardedInput::open(const std::string& url, const AVInputFormat& format) {
    AVFormatContext* context = context_.get();
    context->opaque = guard_.get();
    context->io_open = openReference;
    context->max_streams = mostStreams;
    context->format_whitelist = duplicated(formatsBeside(format));
    // Of what is opened past the callback, in contexts of the libraries' own.
    context->protocol_whitelist = duplicated(reachOf(format).reach == Reach::List ? "file" : "none");
    Dictionary options;
    options.set("pattern_type", "none");  // a name with a per cent sign is a name
    // All references come to the callback, which tells what they are.
    options.set("enable_drefs", "1");
    options.set("use_absolute_path", "1");
    options.set("max_reload", "1");
    options.set("allowed_extensions", "ALL");
    // It is freed where opening it fails.
    static_cast<void>(context_.release());
    hadTooManyStreams();
    const int opened = avformat_open_input(&context, url.c_str(), &format, options.address());
    context_.reset(context);
    throwIfInterrupted();
    refuseReferences();
    if (opened < 0) throw Error("cannot open " + name_ + ": " + failure(opened));
}

bool GuardedInput::isSeekable() const {
    return context_->pb != nullptr && (context_->pb->seekable & AVIO_SEEKABLE_NORMAL) != 0;
}

int GuardedInput::findStreams() {
    for (unsigned i = 0; i < context_->nb_streams; ++i) limitStream(*context_->streams[i]->codecpar);
    std::vector<Dictionary> options(context_->nb_streams);
    std::vector<AVDictionary*> entries;
    for (Dictionary& each : options) {
        each.set("max_pixels", std::to_string(policy_.maxPixels));
        entries.push_back(*each.address());
    }
    const int found = avformat_find_stream_info(context_.get(), entries.empty() ? nullptr : entries.data());
    // The libraries replaced what they took of them.
    for (std::size_t i = 0; i < options.size(); ++i) *options[i].address() = entries[i];
    throwIfInterrupted();
    refuseReferences();
    return found;
}

std::string GuardedInput::failure(int code) const {
    if (hadTooManyStreams())
        throw Error(name_ + " has more than " + std::to_string(mostStreams) + " streams and is not read");
    const std::string words = failureText(code);
    if (code != AVERROR(ENOMEM)) return words;
    if (isMemoryShort()) throw std::bad_alloc();
    return words;
}

int GuardedInput::openReference(AVFormatContext* context, AVIOContext** io, const char* url, int flags,
                                AVDictionary** options) {
    auto* const guard = static_cast<Guard*>(context->opaque);
    if (guard == nullptr || (flags & AVIO_FLAG_WRITE) != 0) return AVERROR(EACCES);
    try {
        const std::string_view name = url;
        std::string allowed = url;
        if (!name.starts_with("data:")) {
            const auto file = fileOf(name);
            if (!file) return guard->refuse(url, "and nothing is read from networks");
            const std::filesystem::path path = pathOf(*file);
            const bool isItself = guard->folder && guard->folder->isInput(path);
            if (!isItself && !(guard->allows && guard->folder && guard->folder->holdsBelow(path)))
                return guard->refuse(*file, guard->allows ? "which does not lie below its folder" : "");
            const std::string fault = isItself ? std::string() : playlistFault(path);
            if (!fault.empty()) return guard->refuse(*file, "which " + fault);
            const bool isCiphered = name.starts_with("crypto:") || name.starts_with("crypto+");
            allowed = (isCiphered ? "crypto:" : "") + fileUrl(*file);
        }
        Dictionary own;
        AVDictionary** const all = options != nullptr ? options : own.address();
        av_dict_set(all, "protocol_whitelist", localProtocols, 0);
        const int opened = avio_open2(io, allowed.c_str(), flags, &context->interrupt_callback, all);
        // Playlists pass over what is missing, and say nothing.
        if (opened < 0 && opened != AVERROR_EXIT) guard->refuse(url, "which cannot be opened");
        return opened;
    } catch (const std::exception&) {
        return AVERROR(ENOMEM);
    }
}

void GuardedInput::refuseFormat(const AVInputFormat& format) const {
    const FormatReach reach = reachOf(format);
    if (reach.reach == Reach::Itself) return;
    const std::string what = name_ + " is " + reach.kind;
    if (reach.reach == Reach::Machine)
        throw Error(what + ", which reads other files or addresses and is never an input");
    if (!guard_->folder) throw Error(what + ", which reads other files and here has no folder for them");
    if (!policy_.references)
        throw Error(what +
                    ", which reads other files; --allow-references lets it read those below its folder");
}

void GuardedInput::refuseReferences() const {
    if (guard_->refused.empty()) return;
    const std::string what = name_ + " names " + guard_->refused;
    if (!guard_->reason.empty()) throw Error(what + ", " + guard_->reason);
    throw Error(what + " and would read it; --allow-references lets it read what lies below its folder");
}

}  // namespace vireo
