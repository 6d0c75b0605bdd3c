// SPDX-License-Identifier: MIT
// Opens both ends of a job with FFmpeg's libraries.
#include "app/base/files.h"

#include "app/media/describe_media.h"
#include "app/media/ffmpeg_pictures.h"
#include "app/media/ffmpeg_source.h"
#include "app/media/ffmpeg_writer.h"
#include "app/media/output_group.h"
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
OutputDescription describePictures(const RenderJob& job, const FfmpegSource& source,
                                   std::int64_t firstNumber) {
    const bool isSequence = SequencePattern::parse(job.output).has_value();
    const bool alpha = isSequence || job.alpha;
    OutputDescription output =
        describeOutput(job, source, choosePictureEncoder(job, source.video, source.depth, alpha));
    output.alphaIfNeeded =
        !alpha && choosePictureEncoder(job, source.video, source.depth, true).alpha && !output.alpha;
    describePictureFiles(job, firstNumber, source.reader->info(), output);
    return output;
}

void refuseExistingOutput(const RenderJob& job) {
    const bool isSequence = writesPictures(job) && SequencePattern::parse(job.output);
    if (!job.overwrite && job.output != "-" && !isSequence &&
        std::filesystem::is_regular_file(pathOf(job.output)))
        throw Error(job.output + " exists; --overwrite replaces it");
}

/// One of a job's outputs, which is told of in `media`.
std::unique_ptr<MediaWriter> openWriter(const RenderJob& job, const FfmpegSource& source,
                                        const StopRequest& stop, Messages& messages,
                                        MediaDescription& media) {
    const std::vector<TrackDescription>& tracks = media.input.tracks;
    if (!writesPictures(job)) {
        auto writer =
            std::make_unique<FfmpegWriter>(job, source.container, source.video, source.depth, stop, messages);
        OutputDescription& output = media.outputs.emplace_back(describeOutput(job, source, writer->choice()));
        for (const TrackDescription& track : tracks) output.fates.push_back(writer->fateOf(track.index));
        return writer;
    }
    const SourceInfo& info = source.reader->info();
    const std::int64_t firstNumber = job.startNumber.value_or(source.firstNumber);
    checkPictureOutput(job, firstNumber, info.firstFrame, info.framesExpected);
    if (source.container != nullptr) source.container->connect([](PacketPtr) {});
    auto writer = std::make_unique<PictureWriter>(
        job, std::make_unique<FfmpegPictureTarget>(job, source.video, source.depth, messages), firstNumber);
    OutputDescription& output = media.outputs.emplace_back(describePictures(job, source, firstNumber));
    for (const TrackDescription& track : tracks) {
        const bool isVideo = track.index == source.container->videoStream();
        output.fates.push_back(isVideo ? TrackFate::Rendered : TrackFate::LeftOut);
    }
    return writer;
}

}  // namespace

bool writesOnePicture(const RenderJob& job) {
    return writesPictures(job) && !SequencePattern::parse(job.output);
}

Media openMedia(const RenderJob& job, const FrameProcessor& processor, const StopRequest& stop,
                Messages& messages) {
    refuseExistingOutput(job);
    for (const RenderJob& other : job.alsoTo) refuseExistingOutput(other);

    FfmpegSource source = openSource(job, processor, stop, messages);
    warnOfDepth(job, source, messages);
    Media media;
    media.pictureFormat = source.pictureFormat;
    MediaDescription& description = media.description;
    description.input = describeInput(job, source);
    description.renderedDepth = source.depth;
    if (job.output.empty()) {
        media.writer = std::make_unique<NoWriter>();
        if (source.container != nullptr) source.container->connect([](PacketPtr) {});
    } else {
        media.writer = openWriter(job, source, stop, messages, description);
        std::vector<TrackDescription>& tracks = description.input.tracks;
        for (std::size_t i = 0; i < tracks.size(); ++i) tracks[i].fate = description.outputs.front().fates[i];
    }
    if (!job.alsoTo.empty()) {
        std::vector<std::unique_ptr<MediaWriter>> writers;
        writers.push_back(std::move(media.writer));
        for (const RenderJob& other : job.alsoTo)
            writers.push_back(openWriter(other, source, stop, messages, description));
        media.writer = std::make_unique<OutputGroup>(std::move(writers));
    }
    media.reader = std::move(source.reader);
    return media;
}

}  // namespace vireo
