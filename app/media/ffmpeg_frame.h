// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_FFMPEG_FRAME_H
#define VIREO_APP_MEDIA_FFMPEG_FRAME_H

#include "app/media/color_coding.h"
#include "app/media/ffmpeg_objects.h"
#include "app/media/media.h"
#include "app/media/picture_tools.h"

namespace vireo {

/// What the pictures of an input are like, as its first frame says it.
struct VideoProperties {
    AVPixelFormat format = AV_PIX_FMT_NONE;
    AVCodecID codec = AV_CODEC_ID_NONE;
    int width = 0;  ///< As stored, not turned yet.
    int height = 0;
    Orientation orientation;
    AVRational pixelAspect{0, 1};  ///< As stored; 0 where unknown.
    AVRational timeBase{1, 25};
    AVRational frameRate{25, 1};
    AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
    AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
    AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
    AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
    AVChromaLocation chromaLocation = AVCHROMA_LOC_UNSPECIFIED;
    ColorCoding coding;
    Interlacing interlacing = Interlacing::Progressive;
    bool premultiplied = false;
    bool dithers = true;  ///< Frames deeper than the pictures that are made of them.
    bool alpha = false;   ///< Worth keeping.

    int uprightWidth() const { return orientation.transpose ? height : width; }
    int uprightHeight() const { return orientation.transpose ? width : height; }
    AVRational uprightPixelAspect() const {
        return orientation.transpose ? AVRational{pixelAspect.den, pixelAspect.num} : pixelAspect;
    }
};

/// A colour tag of FFmpeg's structures, unspecified where a file gave it a number without a meaning.
AVColorRange knownTag(const AVColorRange& tag);
AVColorSpace knownTag(const AVColorSpace& tag);
AVColorPrimaries knownTag(const AVColorPrimaries& tag);
AVColorTransferCharacteristic knownTag(const AVColorTransferCharacteristic& tag);

/// Reads the properties off a decoded frame; those that belong to a stream are left alone.
VideoProperties propertiesOf(const AVFrame& frame, AVCodecID codec);

/// How the fields of a frame lie by its own marks.
Interlacing markedInterlacing(const AVFrame& frame);

/// How the fields of a frame lie once it stands upright.
Interlacing uprightInterlacing(Interlacing stored, const VideoProperties& video);

/// A source frame that the libraries decoded.
class FfmpegFrame : public SourceFrame {
public:
    /// Time stamps and everything else that belongs to a frame beside its pixels.
    virtual const AVFrame& properties() const = 0;
};

/// One whose pixels are there.
class DecodedFrame : public FfmpegFrame {
public:
    /// `video` must outlive the frame.
    DecodedFrame(FramePtr frame, const VideoProperties& video) : frame_(std::move(frame)), video_(video) {}

    PicturePtr picture(std::uint32_t format) override;
    const AVFrame& properties() const override { return *frame_; }

    /// The frame as it was decoded, which this one is without from here on.
    FramePtr takePixels() { return std::move(frame_); }

private:
    FramePtr frame_;
    const VideoProperties& video_;
};

/// One that could not be decoded.
class LostFrame : public FfmpegFrame {
public:
    LostFrame(std::int64_t time, std::string reason) : reason_(std::move(reason)), frame_(newFrame()) {
        frame_->pts = time;
    }

    PicturePtr picture(std::uint32_t) override { throw DamagedFrame(reason_); }
    const AVFrame& properties() const override { return *frame_; }

private:
    std::string reason_;
    FramePtr frame_;
};

}  // namespace vireo

#endif
