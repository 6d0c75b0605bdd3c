// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_PACKET_INDEX_H
#define VIREO_APP_MEDIA_PACKET_INDEX_H

#include "app/media/ffmpeg_objects.h"
#include "app/render/interruption.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vireo {

/// The number of frames that the container itself tells exactly.
std::optional<std::int64_t> exactFrameCount(const AVFormatContext& input, int stream);

/// The presentation times of a stream's frames in order, got by reading all packets of the file; empty where
/// some have none or two have the same, with the number of packets in `count` all the same.
std::vector<std::int64_t> packetTimes(const std::string& path, int stream, const StopRequest& stop,
                                      std::int64_t& count);

/// Whether the packet becomes a frame that is shown.
bool holdsShownFrame(const AVPacket& packet, AVCodecID codec);

}  // namespace vireo

#endif
