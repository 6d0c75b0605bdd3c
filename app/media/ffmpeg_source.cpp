// SPDX-License-Identifier: MIT
#include "app/media/ffmpeg_source.h"

#include "app/base/files.h"
#include "app/media/ffmpeg_pictures.h"
#include "app/media/pixel_format.h"
#include "engine/error.h"

namespace vireo {
namespace {

/// Filters leave an input that is only looked at as it is.
class NoProcessor : public FrameProcessor {
public:
    int lookBack() const override { return 0; }
    std::uint32_t sourceFormat(int depth) const override {
        return depth == 32 ? formatBgraFloat : depth > 8 ? formatBgra16 : PixKit::formatBgra;
    }
    PicturePtr process(PicturePtr source, const FramePosition&, const SourceHistory&) override {
        return source;
    }
};

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
    refuseAddress(job.input);
    FfmpegSource source;
    const auto pattern = SequencePattern::parse(job.input);
    if (pattern && !std::filesystem::exists(pathOf(job.input))) {
        auto pictures = std::make_unique<FfmpegPictureSource>(job, messages);
        const FfmpegPictureSource& opened = *pictures;
        auto reader = std::make_unique<SequenceReader>(job, *pattern, processor.lookBack(),
                                                       std::move(pictures), messages);
        source.video = opened.video();
        source.firstNumber = reader->firstNumber();
        source.reader = std::move(reader);
    } else {
        auto reader = std::make_unique<FfmpegReader>(job, processor.lookBack(), stop, messages);
        source.container = reader.get();
        source.video = reader->video();
        source.reader = std::move(reader);
    }

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

FfmpegSource openSource(const RenderJob& job, const StopRequest& stop, Messages& messages) {
    return openSource(job, NoProcessor(), stop, messages);
}

}  // namespace vireo
