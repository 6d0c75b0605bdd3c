// SPDX-License-Identifier: MIT
#include "app/media/decoder_complaints.h"

extern "C" {
#include <libavutil/mem.h>
}

#include <algorithm>
#include <cstdio>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

namespace vireo {
namespace {

/// Of GIF, JPEG, DV, TIFF and EXR.
constexpr std::string_view damages[] = {
    "LZW decode failed",    "error count",          "error dc", "error y", "mjpeg_decode_dc", "AC EOB marker",
    "Uncompressing failed", "decode_block() failed"};

}  // namespace

DecoderComplaints* DecoderComplaints::of(void* source) {
    while (source != nullptr) {
        const AVClass* const kind = *static_cast<const AVClass**>(source);
        if (kind == nullptr) return nullptr;
        if (kind == avcodec_get_class())
            return static_cast<DecoderComplaints*>(static_cast<AVCodecContext*>(source)->opaque);
        // What a decoder calls logs for it.
        if (kind->parent_log_context_offset == 0) return nullptr;
        source = *reinterpret_cast<void**>(static_cast<char*>(source) + kind->parent_log_context_offset);
    }
    return nullptr;
}

void DecoderComplaints::add(const std::string& complaint) {
    const std::lock_guard lock(mutex_);
    // Others follow that say less.
    unsigned width = 0, height = 0;
    if (std::sscanf(complaint.c_str(), "Picture size %ux%u", &width, &height) == 2)
        refused_ = {width, height};
    last_ = complaint;
    damage_ = damage_ || std::any_of(std::begin(damages), std::end(damages),
                                     [&](std::string_view damage) { return complaint.starts_with(damage); });
}

bool DecoderComplaints::takeDamage() {
    const std::lock_guard lock(mutex_);
    return std::exchange(damage_, false);
}

std::string DecoderComplaints::take() {
    const std::lock_guard lock(mutex_);
    refused_ = {};
    return std::exchange(last_, {});
}

std::string DecoderComplaints::failure(int code, const InputPolicy& policy) {
    std::optional<std::string> excess;
    {
        const std::lock_guard lock(mutex_);
        excess = excessOf(refused_.first, refused_.second, policy);
    }
    const std::string complaint = take();
    if (excess) return *excess;
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
