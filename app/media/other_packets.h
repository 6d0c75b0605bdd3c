// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_OTHER_PACKETS_H
#define VIREO_APP_MEDIA_OTHER_PACKETS_H

#include "app/media/ffmpeg_input.h"

#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <vector>

namespace vireo {

/// Takes the packets of the other streams, on the reader's thread. Their times are the input's.
using PacketSink = std::function<void(PacketPtr packet)>;

/// What is met of the streams beside the video while it is read: kept until there is an output for it, then
/// handed on as far as it belongs to the part that is rendered.
class OtherPackets {
public:
    explicit OtherPackets(const FfmpegInput& input) : input_(input) {}

    void take(PacketPtr packet);

    /// Forgets what is kept; or of that, what begins before a time in seconds.
    void clear() { kept_.clear(); }
    void clearBefore(double time);

    /// The part, in seconds of the input's clock.
    void limit(double start, double end);

    /// From here on packets go to `sink`, those that are kept at once; there may be several.
    void connect(PacketSink sink);

    /// The time of a stream's first packet that is kept, in its time base.
    std::optional<std::int64_t> firstTimeOf(const AVStream& stream) const;

private:
    bool isInPart(const AVPacket& packet) const;

    const FfmpegInput& input_;
    std::vector<PacketPtr> kept_;
    std::vector<PacketSink> sinks_;
    double start_ = noTime;
    double end_ = std::numeric_limits<double>::infinity();
};

}  // namespace vireo

#endif
