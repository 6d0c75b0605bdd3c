// SPDX-License-Identifier: MIT
#include "app/media/decoder_limits.h"

#include "app/media/file_ending.h"
#include "app/media/png_chunks.h"

#include <algorithm>
#include <cstring>

namespace vireo {
namespace {

bool isPng(AVCodecID codec) { return codec == AV_CODEC_ID_PNG || codec == AV_CODEC_ID_APNG; }

}  // namespace

void limitStream(AVCodecParameters& stream) {
    if (!isPng(stream.codec_id) || stream.extradata_size <= 0) return;
    const auto size = static_cast<std::size_t>(stream.extradata_size);
    const std::size_t left = removeSwellingChunks({stream.extradata, size});
    std::fill(stream.extradata + left, stream.extradata + size, std::uint8_t{0});
    stream.extradata_size = static_cast<int>(left);
}

void limitDecoder(AVCodecContext& decoder, const InputPolicy& policy) {
    // Threads of whole frames hold one each.
    constexpr std::int64_t pixelsAtOnce = 1 << 28;
    decoder.max_pixels = policy.maxPixels;
    const std::int64_t pixels = static_cast<std::int64_t>(decoder.width) * decoder.height;
    if (pixels > 0)
        decoder.thread_count = static_cast<int>(
            std::clamp<std::int64_t>(pixelsAtOnce / pixels, 1, std::max(1, decoder.thread_count)));
}

bool pictureBreaksOff(const AVPacket& picture, AVCodecID codec) {
    const std::span<const std::uint8_t> bytes(picture.data, static_cast<std::size_t>(picture.size));
    switch (codec) {
        case AV_CODEC_ID_MJPEG:
        case AV_CODEC_ID_JPEGLS: return jpegBreaksOff(bytes);
        case AV_CODEC_ID_EXR: return exrBreaksOff(bytes);
        case AV_CODEC_ID_QOI: return qoiBreaksOff(bytes);
        default: return false;
    }
}

void limitPacket(AVPacket& packet, AVCodecID codec) {
    if (!isPng(codec) || packet.size <= 0) return;
    if (av_packet_make_writable(&packet) < 0) throw std::bad_alloc();
    const std::size_t left = removeSwellingChunks({packet.data, static_cast<std::size_t>(packet.size)});
    av_shrink_packet(&packet, static_cast<int>(left));
}

}  // namespace vireo
