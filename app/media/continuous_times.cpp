// SPDX-License-Identifier: MIT
#include "app/media/continuous_times.h"

#include <algorithm>

namespace vireo {

void ContinuousTimes::correct(AVPacket& packet, const AVStream& stream) {
    constexpr std::int64_t untidy = 100000;  // some files go back a little and on again
    Clock& clock = clocks_.try_emplace(stream.index, Clock{.shift = shift_}).first->second;
    if (packet.dts != AV_NOPTS_VALUE) {
        const auto micros = [&](std::int64_t time) {
            return av_rescale_q(time, stream.time_base, AV_TIME_BASE_Q);
        };
        const std::int64_t own = micros(packet.dts);
        const auto turnsBack = [&](std::int64_t shift) { return own + shift + untidy < clock.last; };
        if (turnsBack(clock.shift)) {
            if (turnsBack(shift_)) shift_ = clock.end - own;
            clock.shift = shift_;
        }
        clock.last = own + clock.shift;
        clock.end = clock.last + micros(std::max<std::int64_t>(packet.duration, 0));
    }
    if (clock.shift == 0) return;
    const std::int64_t shift = av_rescale_q(clock.shift, AV_TIME_BASE_Q, stream.time_base);
    if (packet.dts != AV_NOPTS_VALUE) packet.dts += shift;
    if (packet.pts != AV_NOPTS_VALUE) packet.pts += shift;
}

}  // namespace vireo
