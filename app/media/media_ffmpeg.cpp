// SPDX-License-Identifier: MIT
// Opens both ends of a job with FFmpeg's libraries.
#include "app/base/files.h"

#include "app/media/ffmpeg_pictures.h"
#include "app/media/ffmpeg_source.h"
#include "app/media/ffmpeg_writer.h"
#include "engine/error.h"

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
                        std::to_string(source.depth) +
                        (job.dithers && source.depth == 8 ? " bits with dithering" : " bits"));
    }
}

}  // namespace

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
