// SPDX-License-Identifier: MIT
// Opens both ends of a job with FFmpeg's libraries.
#include "app/files.h"

#include "app/media/ffmpeg_pictures.h"
#include "app/media/ffmpeg_source.h"
#include "app/media/ffmpeg_writer.h"

namespace vireo {
namespace {

void warnOfDepth(const RenderJob& job, const FfmpegSource& source, Messages& messages) {
    const VideoProperties& video = source.video;
    const int sourceDepth = source.reader->info().depth;
    if (video.transfer == AVCOL_TRC_SMPTE2084 || video.transfer == AVCOL_TRC_ARIB_STD_B67) {
        messages.warning(job.input + " is HDR (" + av_color_transfer_name(video.transfer) +
                         "): the filters take its values as they are, as if it were not, and the result may "
                         "look wrong");
    }
    if (source.depth < sourceDepth) {
        const std::string have = sourceDepth == 32 ? "floating-point" : std::to_string(sourceDepth) + "-bit";
        messages.notice(job.input + " has " + have + " channels; they are brought to " +
                        std::to_string(source.depth) + " bits with dithering");
    }
}

/// The properties of an output whose frames have another shape than the source's.
void reshape(VideoProperties& video, const SourceInfo& info, const FrameShape& shape) {
    video.alpha = shape.alpha;
    if (shape.width == info.width && shape.height == info.height) return;
    video.width = video.orientation.transpose ? shape.height : shape.width;
    video.height = video.orientation.transpose ? shape.width : shape.height;
    // A player guesses the colours of an untagged video by its height.
    if (video.matrix == AVCOL_SPC_UNSPECIFIED && !formatIsRgb(video.format))
        video.matrix = video.coding.matrix;
}

}  // namespace

FfmpegSource openSource(const RenderJob& job, const FrameProcessor& processor, const StopRequest& stop,
                        Messages& messages) {
    captureLibraryMessages();
    FfmpegSource source;
    const auto pattern = SequencePattern::parse(job.input);
    if (pattern && !std::filesystem::exists(pathOf(job.input))) {
        auto pictures = std::make_unique<FfmpegPictureSource>(job);
        const FfmpegPictureSource& opened = *pictures;
        auto reader = std::make_unique<SequenceReader>(job, *pattern, processor.lookBack(),
                                                       std::move(pictures), messages);
        source.video = opened.video();
        if (job.interlacing) source.video.interlacing = *job.interlacing;
        source.firstNumber = reader->firstNumber();
        source.reader = std::move(reader);
    } else {
        auto reader = std::make_unique<FfmpegReader>(job, processor.lookBack(), stop, messages);
        source.container = reader.get();
        source.video = reader->video();
        source.reader = std::move(reader);
    }
    if (job.startNumber) source.firstNumber = *job.startNumber;

    const SourceInfo& info = source.reader->info();
    reshape(source.video, info, processor.outputShape({info.width, info.height, info.alpha}));
    const int sourceDepth = info.depth;
    source.pictureFormat = processor.sourceFormat(sourceDepth);
    if (source.pictureFormat == formatBgraFloat && sourceDepth == 32) {
        source.depth = 32;
    } else if (source.pictureFormat != PixKit::formatBgra) {
        source.pictureFormat = formatBgra16;
        source.depth = std::min(sourceDepth, 16);
    }
    const std::string refusal =
        processor.refusal(info.width, info.height, source.pictureFormat, source.video.interlacing);
    if (!refusal.empty()) throw Error(job.input + ": " + refusal);
    return source;
}

Media openMedia(const RenderJob& job, const FrameProcessor& processor, const StopRequest& stop,
                Messages& messages) {
    const bool pictures = writesPictures(job);
    if (!job.overwrite && job.output != "-" && !(pictures && SequencePattern::parse(job.output)) &&
        std::filesystem::is_regular_file(job.output))
        throw Error(job.output + " exists; --overwrite replaces it");

    FfmpegSource source = openSource(job, processor, stop, messages);
    warnOfDepth(job, source, messages);
    Media media;
    media.pictureFormat = source.pictureFormat;
    if (pictures) {
        const SourceInfo& info = source.reader->info();
        checkPictureOutput(job, source.firstNumber, info.firstFrame, info.framesExpected);
        media.writer = std::make_unique<PictureWriter>(
            job, std::make_unique<FfmpegPictureTarget>(job, source.video, source.depth, messages),
            source.firstNumber);
        if (source.container != nullptr) source.container->connect([](PacketPtr) {});
    } else {
        media.writer =
            std::make_unique<FfmpegWriter>(job, source.container, source.video, source.depth, stop, messages);
    }
    media.reader = std::move(source.reader);
    return media;
}

}  // namespace vireo
