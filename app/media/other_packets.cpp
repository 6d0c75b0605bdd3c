// SPDX-License-Identifier: MIT
#include "app/media/other_packets.h"

namespace vireo {

void OtherPackets::take(PacketPtr packet) {
    if (sink_ == nullptr) {
        kept_.push_back(std::move(packet));
        return;
    }
    const double begin = input_.timeOf(*packet);
    // Each packet belongs to the part where it begins, so that parts join.
    if (begin == noTime || (begin >= start_ - sameTime && begin < end_ - sameTime)) sink_(std::move(packet));
}

void OtherPackets::clearBefore(double time) {
    std::erase_if(kept_, [&](const PacketPtr& packet) { return input_.timeOf(*packet) < time; });
}

void OtherPackets::limit(double start, double end) {
    start_ = start;
    end_ = end;
}

void OtherPackets::connect(PacketSink sink) {
    sink_ = std::move(sink);
    for (PacketPtr& packet : kept_) take(std::move(packet));
    kept_.clear();
}

std::optional<std::int64_t> OtherPackets::firstTimeOf(const AVStream& stream) const {
    for (const PacketPtr& packet : kept_) {
        if (packet->stream_index == stream.index && packet->pts != AV_NOPTS_VALUE) return packet->pts;
    }
    return std::nullopt;
}

}  // namespace vireo
