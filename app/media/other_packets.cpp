// SPDX-License-Identifier: MIT
#include "app/media/other_packets.h"

namespace vireo {

namespace {

PacketPtr copyOf(const AVPacket& packet) {
    PacketPtr copy(av_packet_clone(&packet));
    if (copy == nullptr) throw std::bad_alloc();
    return copy;
}

}  // namespace

void OtherPackets::take(PacketPtr packet) {
    if (sinks_.empty()) {
        kept_.push_back(std::move(packet));
        return;
    }
    // All outputs are there.
    kept_.clear();
    if (!isInPart(*packet)) return;
    for (std::size_t i = 1; i < sinks_.size(); ++i) sinks_[i](copyOf(*packet));
    sinks_.front()(std::move(packet));
}

/// Each packet belongs to the part where it begins, so that parts join.
bool OtherPackets::isInPart(const AVPacket& packet) const {
    const double begin = input_.timeOf(packet);
    return begin == noTime || (begin >= start_ - sameTime && begin < end_ - sameTime);
}

void OtherPackets::clearBefore(double time) {
    std::erase_if(kept_, [&](const PacketPtr& packet) { return input_.timeOf(*packet) < time; });
}

void OtherPackets::limit(double start, double end) {
    start_ = start;
    end_ = end;
}

void OtherPackets::connect(PacketSink sink) {
    for (const PacketPtr& packet : kept_) {
        if (isInPart(*packet)) sink(copyOf(*packet));
    }
    sinks_.push_back(std::move(sink));
}

std::optional<std::int64_t> OtherPackets::firstTimeOf(const AVStream& stream) const {
    for (const PacketPtr& packet : kept_) {
        if (packet->stream_index == stream.index && packet->pts != AV_NOPTS_VALUE) return packet->pts;
    }
    return std::nullopt;
}

}  // namespace vireo
