// SPDX-License-Identifier: MIT
// Opens both ends of a job with FFmpeg's libraries.
#include "app/base/files.h"

#include "app/media/describe_media.h"
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
        messages.warning(
            MessageCode::HdrAsItIs,
            job.input + " is HDR (" + av_color_transfer_name(video.transfer) +
                "): the filters take its values as they are, as if it were not, and the result may "
                "look wrong");
    }
    if (source.depth < sourceDepth) {
        const std::string have = sourceDepth == 32 ? "floating-point" : std::to_string(sourceDepth) + "-bit";
        messages.notice(MessageCode::DepthReduced,
                        job.input + " has " + have + " channels; they are brought to " +
                            std::to_string(source.depth) +
                            (job.dithers && source.depth == 8 ? " bits with dithering" : " bits"));
    }
}

/// A picture gets alpha where it needs it, all pictures of a sequence where their format holds it.
OutputDescription describePictures(const RenderJob& job, const FfmpegSource& source) {
    const bool isSequence = SequencePattern::parse(job.output).has_value();
    const bool alpha = isSequence || job.alpha;
    OutputDescription output =
        describeOutput(job, source, choosePictureEncoder(job, source.video, source.depth, alpha));
    output.alphaIfNeeded =
        !alpha && choosePictureEncoder(job, source.video, source.depth, true).alpha && !output.alpha;
    describePictureFiles(job, source.firstNumber, source.reader->info(), output);
    return output;
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
    media.description.input = describeInput(job, source);
    media.description.renderedDepth = source.depth;
    std::vector<TrackDescription>& tracks = media.description.input.tracks;
    if (job.output.empty()) {
        media.writer = std::make_unique<NoWriter>();
        if (source.container != nullptr) source.container->connect([](PacketPtr) {});
    } else if (pictures) {
        const SourceInfo& info = source.reader->info();
        checkPictureOutput(job, source.firstNumber, info.firstFrame, info.framesExpected);
        media.writer = std::make_unique<PictureWriter>(
            job, std::make_unique<FfmpegPictureTarget>(job, source.video, source.depth, messages),
            source.firstNumber);
        media.description.output = describePictures(job, source);
        for (TrackDescription& track : tracks) {
            const bool isVideo = track.index == source.container->videoStream();
            track.fate = isVideo ? TrackFate::Rendered : TrackFate::LeftOut;
        }
        if (source.container != nullptr) source.container->connect([](PacketPtr) {});
    } else {
        auto writer =
            std::make_unique<FfmpegWriter>(job, source.container, source.video, source.depth, stop, messages);
        media.description.output = describeOutput(job, source, writer->choice());
        for (TrackDescription& track : tracks) track.fate = writer->fateOf(track.index);
        media.writer = std::move(writer);
    }
    media.reader = std::move(source.reader);
    return media;
}

}  // namespace vireo
