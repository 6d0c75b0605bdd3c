// SPDX-License-Identifier: MIT
// What keeps a decoder from taking more than an input may ask for.
#ifndef VIREO_APP_MEDIA_DECODER_LIMITS_H
#define VIREO_APP_MEDIA_DECODER_LIMITS_H

#include "app/media/ffmpeg_objects.h"
#include "app/media/input_policy.h"

namespace vireo {

/// To be called before streams are probed.
void limitStream(AVCodecParameters& stream);

/// To be called before a decoder is opened.
void limitDecoder(AVCodecContext& decoder, const InputPolicy& policy);

/// Whether a picture, all of a file, is there in part.
bool pictureBreaksOff(const AVPacket& picture, AVCodecID codec);

/// To be called before a packet is decoded.
void limitPacket(AVPacket& packet, AVCodecID codec);

}  // namespace vireo

#endif
