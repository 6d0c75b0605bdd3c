// SPDX-License-Identifier: MIT
#include "host/pixkit/pixel_formats.h"

#include "host/vireo_host.h"

#include <atomic>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>

namespace {

/// The buffers in a format other than "bgra". Most hosts have none, so the count is asked before the lock.
std::unordered_map<const FrameBuffer*, std::uint32_t> formats;
std::atomic<std::size_t> formatCount{0};
std::shared_mutex formatsMutex;

}  // namespace

namespace PixKit {

int bytesPerPixel(std::uint32_t code) {
    switch (code) {
        case formatCode("VUya"):
        case formatCode("BGra"):
        case formatCode("ARgb"): return 16;
        case formatCode("Vuya"):
        case formatCode("Bgra"):
        case formatCode("Argb"): return 8;
        default: return 4;
    }
}

std::uint32_t pixelFormat(const FrameBuffer* handle) {
    if (formatCount.load(std::memory_order_acquire) == 0) return formatBgra;
    const std::shared_lock lock(formatsMutex);
    const auto found = formats.find(handle);
    return found == formats.end() ? formatBgra : found->second;
}

void forgetPixelFormat(const FrameBuffer* handle) {
    if (formatCount.load(std::memory_order_acquire) == 0) return;
    const std::unique_lock lock(formatsMutex);
    formats.erase(handle);
    formatCount.store(formats.size(), std::memory_order_release);
}

}  // namespace PixKit

void vireoHostSetPixelFormat(FrameBuffer* handle, std::uint32_t code) {
    if (code == PixKit::formatBgra) {
        PixKit::forgetPixelFormat(handle);
        return;
    }
    const std::unique_lock lock(formatsMutex);
    formats[handle] = code;
    formatCount.store(formats.size(), std::memory_order_release);
}
