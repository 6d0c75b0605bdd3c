// SPDX-License-Identifier: MIT
#include "app/media/packet_index.h"

#include "app/media/continuous_times.h"
#include "app/media/guarded_input.h"

#include <algorithm>
#include <cstring>

namespace vireo {

std::optional<std::int64_t> exactFrameCount(const AVFormatContext& input, int stream) {
    if (std::strstr(input.iformat->name, "mov") == nullptr) return std::nullopt;
    AVStream* const video = input.streams[stream];
    const int entries = avformat_index_get_entries_count(video);
    // A fragmented file's table grows while it is read.
    if (video->nb_frames <= 0 || video->nb_frames != entries) return std::nullopt;
    std::int64_t count = 0;
    for (int i = 0; i < entries; ++i)
        count += (avformat_index_get_entry(video, i)->flags & AVINDEX_DISCARD_FRAME) == 0 ? 1 : 0;
    return count;
}

bool holdsShownFrame(const AVPacket& packet, AVCodecID codec) {
    if ((packet.flags & AV_PKT_FLAG_DISCARD) != 0 || packet.size == 0) return false;
    // VP8 has packets that only later ones refer to.
    return codec != AV_CODEC_ID_VP8 || (packet.data[0] & 0x10) != 0;
}

PacketIndex indexPackets(const std::string& path, const InputPolicy& policy, int stream,
                         const StopRequest& stop, const AVCodecParameters* known) {
    PacketIndex index;
    GuardedInput input(path, policy, &stop);
    AVFormatContext* const context = &input.context();
    if (known != nullptr && stream < static_cast<int>(context->nb_streams))
        check(avcodec_parameters_copy(context->streams[stream]->codecpar, known), "cannot read " + path);
    // Streams of some containers only appear while packets are looked at.
    if (input.findStreams() < 0 || stream >= static_cast<int>(context->nb_streams)) return index;
    // Where the clock may jump, sound and picture tell together where to.
    const bool mayJump = (context->iformat->flags & AVFMT_TS_DISCONT) != 0;
    for (unsigned i = 0; i < context->nb_streams; ++i) {
        const AVMediaType type = context->streams[i]->codecpar->codec_type;
        const bool isWanted = static_cast<int>(i) == stream ||
                              (mayJump && (type == AVMEDIA_TYPE_VIDEO || type == AVMEDIA_TYPE_AUDIO));
        context->streams[i]->discard = isWanted ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    }

    const PacketPtr packet = newPacket();
    ContinuousTimes continuous;
    bool complete = true;
    std::int64_t last = AV_NOPTS_VALUE;
    for (; av_read_frame(context, packet.get()) >= 0; av_packet_unref(packet.get())) {
        continuous.correct(*packet, *context);
        if (packet->stream_index != stream ||
            !holdsShownFrame(*packet, context->streams[stream]->codecpar->codec_id))
            continue;
        ++index.count;
        if (packet->pts == AV_NOPTS_VALUE) complete = false;
        if (packet->pts > last) {
            last = packet->pts;
            index.lastDuration = packet->duration;
        }
        if (complete) index.times.push_back(packet->pts);
    }
    std::sort(index.times.begin(), index.times.end());
    const bool anyTwice = std::adjacent_find(index.times.begin(), index.times.end()) != index.times.end();
    if (!complete || anyTwice) index.times.clear();
    index.jumps = continuous.jumped();
    return index;
}

}  // namespace vireo
