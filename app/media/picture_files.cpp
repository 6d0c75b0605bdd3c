// SPDX-License-Identifier: MIT
#include "app/media/picture_files.h"

#include "app/base/files.h"
#include "app/media/picture_tools.h"
#include "engine/error.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace vireo {
namespace {

class EncodedPicture : public OutputFrame {
public:
    EncodedPicture(std::int64_t frameNumber, std::vector<std::uint8_t> contents)
        : number(frameNumber), bytes(std::move(contents)) {}
    std::int64_t number;
    std::vector<std::uint8_t> bytes;
};

/// A number of the sequence without a file.
class MissingPicture : public SourceFrame {
public:
    explicit MissingPicture(std::string name) : name_(std::move(name)) {}
    PicturePtr picture(std::uint32_t) override { throw DamagedFrame(name_ + " does not exist"); }

private:
    std::string name_;
};

std::string_view textOf(const std::vector<std::uint8_t>& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

SequenceReader::SequenceReader(const RenderJob& job, const SequencePattern& pattern, int lookBack,
                               std::unique_ptr<PictureSource> source, Messages& messages)
    : pattern_(pattern),
      source_(std::move(source)),
      rate_(pictureRate),
      interlacing_(job.preparation.deinterlace ? Interlacing::Progressive
                                               : job.interlacing.value_or(Interlacing::Progressive)) {
    if (const auto& rate = job.preparation.rate)
        rate_ = static_cast<double>(rate->numerator) / rate->denominator;
    const std::vector<std::int64_t> numbers = pattern_.existing();
    if (numbers.empty()) throw Error("there is no picture named like " + job.input);
    refuseLinks(pattern_, numbers, job.policy);
    firstNumber_ = numbers.front();
    const std::int64_t count = numbers.back() - firstNumber_ + 1;

    std::string failure;
    for (std::int64_t number : numbers) {
        try {
            info_ = source_->probe(pattern_.folder() / pattern_.name(number));
            failure.clear();
            break;
        } catch (const DamagedFrame& error) {
            if (failure.empty()) failure = error.what();
        }
    }
    if (!failure.empty()) throw Error(job.input + ": no picture can be read: " + failure);
    info_.frameRate = rate_;
    info_.frameCount = count;

    last_ = count - 1;
    if (job.frames && job.frames->last) last_ = std::min(last_, *job.frames->last);
    // The first picture at a time or later, at most the one behind the last.
    const auto pictureAt = [this, count](double seconds) {
        return std::llround(std::min(std::ceil(seconds * rate_ - 1e-6), static_cast<double>(count)));
    };
    first_ = job.frames ? job.frames->first : pictureAt(job.start.value_or(0));
    if (job.durationFrames) last_ = std::min(last_, lastOf(first_, *job.durationFrames));
    if (job.duration) {
        const double start = job.start.value_or(static_cast<double>(first_) / rate_);
        last_ = std::min<std::int64_t>(last_, pictureAt(start + *job.duration) - 1);
    }
    if (first_ > last_) {
        throw Error(job.input + " has no frame in the range asked for: its frames are 0 to " +
                    std::to_string(count - 1));
    }
    if (job.frames && job.frames->last && *job.frames->last >= count) {
        messages.notice(MessageCode::RangeShortened, job.input + " ends with frame " +
                                                         std::to_string(count - 1) +
                                                         "; what exists of the range is rendered");
    }
    info_.firstFrame = first_;
    info_.framesExpected = last_ - first_ + 1;
    next_ = std::max<std::int64_t>(0, first_ - lookBack);
}

std::unique_ptr<SourceFrame> SequenceReader::read() {
    if (next_ > last_) return nullptr;
    const std::filesystem::path path = pattern_.folder() / pattern_.name(firstNumber_ + next_);
    std::error_code error;
    std::unique_ptr<SourceFrame> frame = source_->frame(path, next_);
    if (!std::filesystem::exists(path, error)) frame = std::make_unique<MissingPicture>(utf8Of(path));
    frame->position = {next_, info_.frameCount, static_cast<double>(next_) / rate_, rate_, interlacing_};
    frame->preRoll = next_ < first_;
    ++next_;
    return frame;
}

PictureWriter::PictureWriter(const RenderJob& job, std::unique_ptr<PictureTarget> target,
                             std::int64_t firstNumber)
    : job_(job),
      target_(std::move(target)),
      firstNumber_(firstNumber),
      pattern_(SequencePattern::parse(job.output)) {
    if (job.dryRun) {
        if (pattern_) {
            checkOutputFolder(pattern_->folder(), job.folderIsMade);
        } else if (job.output != "-") {
            checkOutputFile(pathOf(job.output), job.overwrite, job.folderIsMade);
        }
    } else if (pattern_) {
        files_.emplace(pattern_->folder());
    } else if (job.output != "-") {
        file_.emplace(pathOf(job.output), job.overwrite);
    }
}

std::unique_ptr<OutputFrame> PictureWriter::convert(const Picture& picture, const SourceFrame& source) {
    const bool alpha = pattern_.has_value() || job_.alpha || hasTransparency(picture);
    return std::make_unique<EncodedPicture>(source.position.number, target_->encode(picture, source, alpha));
}

void PictureWriter::write(std::unique_ptr<OutputFrame> frame) {
    const EncodedPicture& picture = static_cast<const EncodedPicture&>(*frame);
    bytes_ += static_cast<std::int64_t>(picture.bytes.size());
    if (pattern_) {
        const std::filesystem::path name = pattern_->name(firstNumber_ + picture.number);
        writeBytes(files_->add(name), textOf(picture.bytes), utf8Of(pattern_->folder() / name));
        return;
    }
    if (written_) checkPictureOutput(job_, firstNumber_, picture.number, 2);
    written_ = true;
    if (file_) {
        writeBytes(file_->path(), textOf(picture.bytes), job_.output);
    } else if (std::fwrite(picture.bytes.data(), 1, picture.bytes.size(), stdout) != picture.bytes.size() ||
               std::fflush(stdout) != 0) {
        throw Error(errno == EPIPE ? "the reader of standard output closed the pipe"
                                   : std::string("cannot write standard output: ") + std::strerror(errno));
    }
}

void PictureWriter::appear() {
    if (files_) files_->commit(job_.overwrite);
    if (file_) file_->commit();
}

void describePictureFiles(const RenderJob& job, std::int64_t firstNumber, const SourceInfo& info,
                          OutputDescription& output) {
    const auto pattern = SequencePattern::parse(job.output);
    if (!pattern) return;
    const auto fileOf = [&](std::int64_t frame) {
        return utf8Of(pattern->folder() / pattern->name(firstNumber + frame));
    };
    output.firstFile = fileOf(info.firstFrame);
    if (info.framesExpected > 0) output.lastFile = fileOf(info.firstFrame + info.framesExpected - 1);
}

void checkPictureOutput(const RenderJob& job, std::int64_t firstNumber, std::int64_t firstFrame,
                        std::int64_t frames) {
    const auto pattern = SequencePattern::parse(job.output);
    if (!pattern) {
        if (frames > 1) {
            throw Error(job.output +
                            " holds one picture: choose a frame with --frames, or name a sequence such "
                            "as frame%04d.png",
                        2);
        }
        return;
    }
    if (job.overwrite) return;
    const std::int64_t first = firstNumber + firstFrame;
    for (std::int64_t number : pattern->existing()) {
        if (number >= first && (frames == 0 || number < first + frames))
            throw Error(utf8Of(pattern->folder() / pattern->name(number)) +
                        " exists; --overwrite replaces it");
    }
}

}  // namespace vireo
