// SPDX-License-Identifier: MIT
#include "app/media/key_frame_seek.h"

namespace vireo {

void seekToKeyFrame(AVFormatContext& input, int stream, std::int64_t time, std::int64_t start) {
    const double unit = av_q2d(input.streams[stream]->time_base);
    const PacketPtr packet = newPacket();
    // A container that seeks by decoding times may land on a key frame that is shown later than wanted.
    for (double secondsBack : {0.0, 2.0, 10.0, 60.0}) {
        const auto earlier = time - static_cast<std::int64_t>(secondsBack / unit);
        if (av_seek_frame(&input, stream, earlier, AVSEEK_FLAG_BACKWARD) < 0) break;
        while (av_read_frame(&input, packet.get()) >= 0 && packet->stream_index != stream)
            av_packet_unref(packet.get());
        const bool early = packet->stream_index == stream && packet->pts != AV_NOPTS_VALUE &&
                           packet->pts <= time && (packet->flags & AV_PKT_FLAG_KEY) != 0;
        av_packet_unref(packet.get());
        if (!early) continue;
        if (av_seek_frame(&input, stream, earlier, AVSEEK_FLAG_BACKWARD) >= 0) return;
    }
    av_seek_frame(&input, stream, start, AVSEEK_FLAG_BACKWARD);
}

}  // namespace vireo
