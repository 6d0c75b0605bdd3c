// SPDX-License-Identifier: MIT
#include "app/media/clip_index.h"

#include "app/media/packet_index.h"

#include <algorithm>

namespace vireo {

std::int64_t ClipIndex::framesBefore(double time) const {
    const auto found = std::find_if(times.begin(), times.end(), [&](std::int64_t frame) {
        return seconds(frame - times.front(), timeBase) >= time - sameTime;
    });
    return found - times.begin();
}

ClipIndex indexClip(const FfmpegInput& input, const RenderJob& job, const StopRequest& stop) {
    ClipIndex clip;
    clip.timeBase = input.video().time_base;
    const bool partWanted = job.frames || job.start;
    if (const auto exact = exactFrameCount(input.context(), input.videoStream()))
        clip.announcedFrames = clip.frameCount = *exact;
    if (input.isSeekable() && (clip.frameCount == 0 || partWanted || job.preparation.rate)) {
        // Of a picture, seeing once more what it is takes as long as reading it.
        PacketIndex packets = indexPackets(job.input, job.policy, input.videoStream(), stop,
                                           input.isPicture() ? input.video().codecpar : nullptr);
        throwIfInterrupted();
        clip.frameCount = packets.count;
        clip.times = std::move(packets.times);
        clip.lastDuration = packets.lastDuration;
        clip.isSeekable = !clip.times.empty() && !packets.jumps;
    }
    if (clip.frameCount == 0) clip.frameCount = job.clipLength.value_or(0);
    // The packets before a part are not seen.
    if (clip.isSeekable && partWanted) clip.announcedFrames = 0;
    return clip;
}

}  // namespace vireo
