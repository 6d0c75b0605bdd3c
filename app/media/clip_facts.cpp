// SPDX-License-Identifier: MIT
#include "app/media/clip_facts.h"

#include "app/base/messages.h"
#include "app/media/ffmpeg_source.h"
#include "app/media/packet_index.h"
#include "app/media/pixel_format.h"
#include "engine/error.h"

namespace vireo {
ClipFacts readClipFacts(const std::string& input, const InputPolicy& policy) {
    if (input == "-") throw Error(Fault::Usage, "standard input cannot be handed on; give a file");
    RenderJob job;
    job.input = input;
    job.policy = policy;
    const InterruptionGuard guard;
    StopRequest stop;
    Messages messages(true);
    const FfmpegSource source = openSource(job, stop, messages);
    const SourceInfo& info = source.reader->info();
    const VideoProperties& video = source.video;

    ClipFacts facts;
    facts.width = info.width;
    facts.height = info.height;
    const AVRational aspect = video.uprightPixelAspect();
    if (aspect.num > 0 && aspect.den > 0) facts.pixelAspect = {aspect.num, aspect.den};
    facts.frameRate = {video.frameRate.num, video.frameRate.den};
    facts.frameCount = info.frameCount;
    facts.interlacing = video.interlacing;
    facts.alpha = info.alpha;
    facts.isRgb = formatIsRgb(video.format);
    facts.standardDefinition = video.coding.matrix != AVCOL_SPC_BT709;
    if (source.container == nullptr) return facts;
    const PacketIndex index = indexPackets(input, policy, source.container->videoStream(), stop);
    throwIfInterrupted();
    const AVFormatContext& container = source.container->input();
    const AVRational timeBase = container.streams[source.container->videoStream()]->time_base;
    for (const std::int64_t time : index.times)
        facts.seconds.push_back(seconds(time - index.times.front(), timeBase));
    if (!index.times.empty() && container.start_time != AV_NOPTS_VALUE)
        facts.start = seconds(index.times.front(), timeBase) - seconds(container.start_time, AV_TIME_BASE_Q);
    if (facts.frameCount == 0) facts.frameCount = index.count;
    return facts;
}

}  // namespace vireo
