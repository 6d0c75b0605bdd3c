// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_PACKET_INDEX_H
#define VIREO_APP_MEDIA_PACKET_INDEX_H

#include "app/base/interruption.h"
#include "app/media/ffmpeg_objects.h"
#include "app/media/input_policy.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vireo {

/// The number of frames that the container itself tells exactly.
std::optional<std::int64_t> exactFrameCount(const AVFormatContext& input, int stream);

/// A stream's frames, got by reading all packets of the file.
struct PacketIndex {
    std::int64_t count = 0;
    std::int64_t lastDuration = 0;  ///< Of the frame shown last; 0 where unknown.
    std::vector<std::int64_t>
        times;           ///< Of presentation, in order; empty where some are missing or the same.
    bool jumps = false;  ///< The times are not the file's own any more: see ContinuousTimes.
};

/// `known` is what the stream was found to be, or null: then the libraries decode some of it to see. Throws
/// Error.
PacketIndex indexPackets(const std::string& path, const InputPolicy& policy, int stream,
                         const StopRequest& stop, const AVCodecParameters* known = nullptr);

/// Whether the packet becomes a frame that is shown.
bool holdsShownFrame(const AVPacket& packet, AVCodecID codec);

}  // namespace vireo

#endif
