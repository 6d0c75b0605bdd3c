// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_ENCODER_CHOICE_H
#define VIREO_APP_MEDIA_ENCODER_CHOICE_H

#include "app/base/message_code.h"
#include "app/media/ffmpeg_frame.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vireo {

using EncoderOptions = std::vector<std::pair<std::string, std::string>>;

/// What the ending of an output's name means.
struct OutputKind {
    std::string_view extension;
    const char* container;     ///< Null: a picture.
    const char* encoder;       ///< Null: the container's own.
    const char* alphaEncoder;  ///< Null: the same.
};

/// The endings that mean something else here than in the libraries, or that they do not know.
std::span<const OutputKind> knownOutputs();

/// What is unlike what was asked for or is usual.
struct EncoderNote {
    MessageCode code;
    std::string text;
};

/// What an output is written with.
struct EncoderChoice {
    const AVOutputFormat* container = nullptr;  ///< Null for a picture.
    const AVCodec* codec = nullptr;
    AVPixelFormat format = AV_PIX_FMT_NONE;
    ColorCoding coding;
    bool alpha = false;
    EncoderOptions defaults;                    ///< For what was not asked for.
    int frameQuality = 0;                       ///< For encoders that are told with each frame.
    const AVCodecHWConfig* hardware = nullptr;  ///< Of an encoder that takes frames of a device alone.
    std::optional<EncoderNote> note;
};

/// Whether the output is a picture or a sequence of pictures, by its name or by the format of standard
/// output.
bool writesPictures(const RenderJob& job);

/// By the output's name, the job's wishes and the source. `depth` is that of the rendered pictures. Throws
/// Error.
EncoderChoice chooseVideoEncoder(const RenderJob& job, const VideoProperties& video, int depth);
EncoderChoice choosePictureEncoder(const RenderJob& job, const VideoProperties& video, int depth, bool alpha);

/// Whether the job names an encoder that works on a device.
bool encodesOnHardware(const RenderJob& job);

/// Opens an encoder of that choice; `context` may have been prepared further. An option that neither the
/// encoder nor, afterwards, `left` takes is refused. Throws Error.
void openEncoder(AVCodecContext& context, const EncoderChoice& choice, const RenderJob& job,
                 Dictionary* left);

/// An encoder with geometry, tags and rates of the video set.
CodecContextPtr newEncoder(const EncoderChoice& choice, const VideoProperties& video);

}  // namespace vireo

#endif
