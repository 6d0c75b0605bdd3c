// SPDX-License-Identifier: MIT
// Opens both ends of a job with the system's picture codecs.
#include "app/media/wic_pictures.h"

#include "app/base/files.h"
#include "engine/error.h"

#include <cmath>

namespace vireo {

namespace {

InputDescription describeInput(const RenderJob& job, const SequenceReader& reader) {
    const SourceInfo& info = reader.info();
    InputDescription input;
    input.name = job.input;
    input.format = "pictures";
    input.width = info.width;
    input.height = info.height;
    input.depth = info.depth;
    input.alpha = info.alpha;
    input.premultiplied = job.premultiplied && info.alpha;
    input.interlacing = job.interlacing.value_or(Interlacing::Progressive);
    input.frameRate = std::to_string(std::lround(info.frameRate)) + "/1";
    input.framesPerSecond = info.frameRate;
    input.frames = info.frameCount;
    input.firstFrame = info.firstFrame;
    input.framesExpected = info.framesExpected;
    return input;
}

std::unique_ptr<SequenceReader> openReader(const RenderJob& job, int lookBack, Messages& messages) {
    refuseAddress(job.input);
    const auto pattern = SequencePattern::parse(job.input);
    return std::make_unique<SequenceReader>(
        job,
        pattern && !std::filesystem::exists(pathOf(job.input)) ? *pattern
                                                               : SequencePattern::single(job.input),
        lookBack, std::make_unique<WicPictureSource>(job.premultiplied), messages);
}

}  // namespace

InputDescription probeInput(const RenderJob& job, const StopRequest&, Messages& messages) {
    return describeInput(job, *openReader(job, 0, messages));
}

bool writesOnePicture(const RenderJob& job) { return !SequencePattern::parse(job.output); }

Media openMedia(const RenderJob& job, const FrameProcessor& processor, const StopRequest&,
                Messages& messages) {
    if (job.input == "-" || job.output == "-")
        throw Error(Fault::Usage, "standard input and output are not read or written as pictures here");
    if (job.quality || job.twoPass || !job.alsoTo.empty())
        throw Error(
            "--quality, --two-pass and --output need FFmpeg, without which this program works on Windows");
    if (job.preparation.changesPictures() || job.preparation.rate)
        throw Error(
            "--crop, --scale, --deinterlace and --fps need FFmpeg, without which this program works on "
            "Windows");
    auto reader = openReader(job, processor.lookBack(), messages);
    const std::string refusal =
        processor.refusal(reader->info().width, reader->info().height, PixKit::formatBgra,
                          job.interlacing.value_or(Interlacing::Progressive));
    if (!refusal.empty()) throw Error(job.input + ": " + refusal);
    const std::int64_t firstNumber = job.startNumber.value_or(reader->firstNumber());
    const SourceInfo& info = reader->info();
    Media media;
    media.pictureFormat = PixKit::formatBgra;
    media.description.input = describeInput(job, *reader);
    if (job.output.empty()) {
        media.writer = std::make_unique<NoWriter>();
        media.reader = std::move(reader);
        return media;
    }
    checkPictureOutput(job, firstNumber, info.firstFrame, info.framesExpected);
    OutputDescription& output = media.description.outputs.emplace_back();
    output.name = job.output;
    output.width = info.width;
    output.height = info.height;
    describePictureFiles(job, firstNumber, info, output);
    auto target = std::make_unique<WicPictureTarget>(job);
    const bool alwaysAlpha = job.alpha || !output.firstFile.empty();
    output.alpha = target->holdsAlpha() && alwaysAlpha;
    output.alphaIfNeeded = target->holdsAlpha() && !alwaysAlpha;
    media.reader = std::move(reader);
    media.writer = std::make_unique<PictureWriter>(job, std::move(target), firstNumber);
    return media;
}

}  // namespace vireo
