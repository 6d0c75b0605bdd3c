// SPDX-License-Identifier: MIT
#include "app/render/picture.h"

#include <limits>
#include <mutex>
#include <new>
#include <vector>

namespace vireo {
namespace {

constexpr std::align_val_t alignment{64};

/// Blocks of the size that was last given back. Fresh memory costs a page fault every 4096 bytes, which is
/// as long as rendering the frame in it.
class BlockStore {
public:
    ~BlockStore() { clear(); }

    std::uint8_t* take(std::size_t bytes) {
        {
            const std::lock_guard lock(mutex_);
            if (bytes == bytes_ && !blocks_.empty()) {
                std::uint8_t* block = blocks_.back();
                blocks_.pop_back();
                return block;
            }
        }
        return static_cast<std::uint8_t*>(::operator new[](bytes, alignment));
    }

    void giveBack(std::uint8_t* block, std::size_t bytes) {
        const std::lock_guard lock(mutex_);
        if (bytes != bytes_) clear();
        bytes_ = bytes;
        if (blocks_.size() < blocks_.capacity()) {
            blocks_.push_back(block);
        } else {
            ::operator delete[](block, alignment);
        }
    }

private:
    void clear() {
        for (std::uint8_t* block : blocks_) ::operator delete[](block, alignment);
        blocks_.clear();
    }

    std::mutex mutex_;
    std::size_t bytes_ = 0;
    std::vector<std::uint8_t*> blocks_ = [] {
        std::vector<std::uint8_t*> blocks;
        blocks.reserve(16);  // giving back must not throw
        return blocks;
    }();
};

BlockStore& blockStore() {
    static BlockStore store;
    return store;
}

}  // namespace

void Picture::Recycle::operator()(std::uint8_t* pixels) const { blockStore().giveBack(pixels, bytes); }

std::int64_t Picture::rowBytesOf(int width, std::uint32_t format) {
    return (std::int64_t{width} * PixKit::bytesPerPixel(format) + 63) / 64 * 64;
}

Picture::Picture(int width, int height, std::uint32_t format) : format_(format) {
    const std::int64_t rowBytes = rowBytesOf(width, format);
    if (width <= 0 || height <= 0 || rowBytes > std::numeric_limits<std::int32_t>::max())
        throw std::bad_alloc();
    const std::size_t bytes = static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(height);
    pixels_ = {blockStore().take(bytes), Recycle{bytes}};
    buffer_ = {{0, 0, width, height}, static_cast<std::int32_t>(rowBytes), 0, pixels_.get()};
    if (format != PixKit::formatBgra) vireoHostSetPixelFormat(&buffer_, format);
}

Picture::~Picture() {
    if (format_ != PixKit::formatBgra) vireoHostSetPixelFormat(&buffer_, PixKit::formatBgra);
}

}  // namespace vireo
