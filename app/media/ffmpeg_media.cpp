// SPDX-License-Identifier: MIT
// Opens both ends of a job with FFmpeg's libraries.
#include "app/files.h"

#include "app/media/ffmpeg_pictures.h"
#include "app/media/ffmpeg_reader.h"
#include "app/media/ffmpeg_writer.h"

namespace vireo {
namespace {

void warnOfDepth(const RenderJob& job, const VideoProperties& video, int sourceDepth, int depth,
                 Messages& messages) {
    if (video.transfer == AVCOL_TRC_SMPTE2084 || video.transfer == AVCOL_TRC_ARIB_STD_B67) {
        messages.warning(job.input + " is HDR (" + av_color_transfer_name(video.transfer) +
                         "): the filters take its values as they are, as if it were not, and the result may "
                         "look wrong");
    }
    if (depth < sourceDepth) {
        const std::string have = sourceDepth == 32 ? "floating-point" : std::to_string(sourceDepth) + "-bit";
        messages.notice(job.input + " has " + have + " channels; they are brought to " +
                        std::to_string(depth) + " bits with dithering");
    }
}

}  // namespace

Media openMedia(const RenderJob& job, const FrameProcessor& processor, const StopRequest& stop,
                Messages& messages) {
    captureLibraryMessages();
    const bool pictures = writesPictures(job);
    if (!job.overwrite && job.output != "-" && !(pictures && SequencePattern::parse(job.output)) &&
        std::filesystem::is_regular_file(job.output))
        throw RenderError(job.output + " exists; --overwrite replaces it");

    Media media;
    FfmpegReader* container = nullptr;
    VideoProperties video;
    std::int64_t firstNumber = 1;
    const auto pattern = SequencePattern::parse(job.input);
    if (pattern && !std::filesystem::exists(pathOf(job.input))) {
        auto source = std::make_unique<FfmpegPictureSource>(job);
        const FfmpegPictureSource& opened = *source;
        auto reader = std::make_unique<SequenceReader>(job, *pattern, processor.lookBack(), std::move(source),
                                                       messages);
        video = opened.video();
        if (job.interlacing) video.interlacing = *job.interlacing;
        firstNumber = reader->firstNumber();
        media.reader = std::move(reader);
    } else {
        auto reader = std::make_unique<FfmpegReader>(job, processor.lookBack(), stop, messages);
        container = reader.get();
        video = reader->video();
        media.reader = std::move(reader);
    }
    if (job.startNumber) firstNumber = *job.startNumber;

    const SourceInfo& info = media.reader->info();
    media.pictureFormat = processor.sourceFormat(info.depth);
    int depth = 8;
    if (media.pictureFormat == formatBgraFloat && info.depth == 32) {
        depth = 32;
    } else if (media.pictureFormat != PixKit::formatBgra) {
        media.pictureFormat = formatBgra16;
        depth = std::min(info.depth, 16);
    }
    warnOfDepth(job, video, info.depth, depth, messages);

    if (pictures) {
        checkPictureOutput(job, firstNumber, info.firstFrame, info.framesExpected);
        media.writer = std::make_unique<PictureWriter>(
            job, std::make_unique<FfmpegPictureTarget>(job, video, depth, messages), firstNumber);
        if (container != nullptr) container->connect([](PacketPtr) {});
    } else {
        media.writer = std::make_unique<FfmpegWriter>(job, container, video, depth, stop, messages);
    }
    return media;
}

}  // namespace vireo
