// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_FFMPEG_PICTURES_H
#define VIREO_APP_MEDIA_FFMPEG_PICTURES_H

#include "app/media/frame_graph.h"
#include "app/media/frame_output.h"
#include "app/media/picture_files.h"

#include <mutex>

namespace vireo {

class FfmpegPictureSource : public PictureSource {
public:
    FfmpegPictureSource(const RenderJob& job, Messages& messages);

    SourceInfo probe(const std::filesystem::path& file) override;
    std::unique_ptr<SourceFrame> frame(const std::filesystem::path& file, std::int64_t number) override;

    /// Of the picture that was probed, as it is rendered.
    const VideoProperties& video() const { return prepared_; }

private:
    Messages& messages_;
    const InputPolicy policy_;
    const bool premultiplied_;
    const bool dithers_;
    const Preparation preparation_;
    const Interlacing interlacing_;
    VideoProperties video_;  ///< As it is stored.
    std::optional<GraphPlan> plan_;
    VideoProperties prepared_;
};

class FfmpegPictureTarget : public PictureTarget {
public:
    FfmpegPictureTarget(const RenderJob& job, const VideoProperties& video, int depth, Messages& messages);

    std::vector<std::uint8_t> encode(const Picture& picture, const SourceFrame& source, bool alpha) override;

private:
    struct Way {
        EncoderChoice choice;
        FrameOutput frames;
    };

    Way way(bool alpha, Messages& messages) const;
    CodecContextPtr openedEncoder(const EncoderChoice& choice) const;

    const RenderJob& job_;
    VideoProperties video_;
    int depth_;
    Way opaque_;
    Way transparent_;
};

}  // namespace vireo

#endif
