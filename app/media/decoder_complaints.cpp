// SPDX-License-Identifier: MIT
#include "app/media/decoder_complaints.h"

extern "C" {
#include <libavutil/mem.h>
}

#include <cstdio>
#include <new>
#include <utility>

namespace vireo {

DecoderComplaints* DecoderComplaints::of(void* source) {
    if (source == nullptr || *static_cast<const AVClass**>(source) != avcodec_get_class()) return nullptr;
    return static_cast<DecoderComplaints*>(static_cast<AVCodecContext*>(source)->opaque);
}

void DecoderComplaints::add(const std::string& complaint) {
    const std::lock_guard lock(mutex_);
    last_ = complaint;
}

std::string DecoderComplaints::take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(last_, {});
}

std::string DecoderComplaints::failure(int code, const InputPolicy& policy) {
    const std::string complaint = take();
    unsigned width = 0, height = 0;
    if (std::sscanf(complaint.c_str(), "Picture size %ux%u", &width, &height) == 2) {
        if (const auto excess = excessOf(width, height, policy)) return *excess;
    }
    if (code == AVERROR(ENOMEM) && isMemoryShort()) throw std::bad_alloc();
    return errorText(code) + (complaint.empty() ? "" : " (" + complaint + ')');
}

bool isMemoryShort(std::int64_t pixels) {
    constexpr std::size_t least = 64 << 20;
    void* const memory = av_malloc(least + 8 * static_cast<std::size_t>(pixels));
    av_free(memory);
    return memory == nullptr;
}

}  // namespace vireo
