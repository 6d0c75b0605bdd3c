// SPDX-License-Identifier: MIT
// Opens both ends of a job with the system's picture codecs.
#include "app/media/wic_pictures.h"

#include "app/base/files.h"
#include "engine/error.h"

namespace vireo {

Media openMedia(const RenderJob& job, const FrameProcessor& processor, const StopRequest&,
                Messages& messages) {
    if (job.input == "-" || job.output == "-")
        throw Error(Fault::Usage, "standard input and output are not read or written as pictures here");
    const auto pattern = SequencePattern::parse(job.input);
    auto reader = std::make_unique<SequenceReader>(
        job,
        pattern && !std::filesystem::exists(pathOf(job.input)) ? *pattern
                                                               : SequencePattern::single(job.input),
        processor.lookBack(), std::make_unique<WicPictureSource>(job.premultiplied), messages);
    const std::string refusal =
        processor.refusal(reader->info().width, reader->info().height, PixKit::formatBgra,
                          job.interlacing.value_or(Interlacing::Progressive));
    if (!refusal.empty()) throw Error(job.input + ": " + refusal);
    const std::int64_t firstNumber = job.startNumber.value_or(reader->firstNumber());
    const SourceInfo& info = reader->info();
    checkPictureOutput(job, firstNumber, info.firstFrame, info.framesExpected);
    Media media;
    media.reader = std::move(reader);
    media.pictureFormat = PixKit::formatBgra;
    media.writer = std::make_unique<PictureWriter>(job, std::make_unique<WicPictureTarget>(job), firstNumber);
    return media;
}

}  // namespace vireo
