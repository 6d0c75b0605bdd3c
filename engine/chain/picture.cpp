// SPDX-License-Identifier: MIT
#include "engine/chain/picture.h"

#include "host/pixkit/pixkit.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <mutex>
#include <new>
#include <vector>

namespace vireo {
namespace {

constexpr std::align_val_t alignment{64};

/// The blocks that were given back last. Fresh memory costs a page fault every 4096 bytes, which is as long
/// as rendering the frame in it.
class BlockStore {
    /// Larger ones are stills', which nobody waits for again.
    static constexpr std::size_t largestKept = std::size_t{160} << 20;

public:
    ~BlockStore() {
        for (const Block& block : blocks_) ::operator delete[](block.pixels, alignment);
    }

    std::uint8_t* take(std::size_t bytes) {
        {
            const std::lock_guard lock(mutex_);
            const auto kept = std::find_if(blocks_.rbegin(), blocks_.rend(),
                                           [bytes](const Block& block) { return block.bytes == bytes; });
            if (kept != blocks_.rend()) {
                std::uint8_t* const pixels = kept->pixels;
                blocks_.erase(std::next(kept).base());
                return pixels;
            }
        }
        return static_cast<std::uint8_t*>(::operator new[](bytes, alignment));
    }

    void giveBack(std::uint8_t* pixels, std::size_t bytes) {
        if (bytes > largestKept) return ::operator delete[](pixels, alignment);
        const std::lock_guard lock(mutex_);
        // Of another size are those of a clip that has ended, or of a band.
        if (blocks_.size() == blocks_.capacity()) {
            ::operator delete[](blocks_.front().pixels, alignment);
            blocks_.erase(blocks_.begin());
        }
        blocks_.push_back({pixels, bytes});
    }

    void clear() {
        const std::lock_guard lock(mutex_);
        for (const Block& block : blocks_) ::operator delete[](block.pixels, alignment);
        blocks_.clear();
    }

private:
    struct Block {
        std::uint8_t* pixels;
        std::size_t bytes;
    };

    std::mutex mutex_;
    std::vector<Block> blocks_ = [] {
        std::vector<Block> blocks;
        blocks.reserve(16);  // giving back must not throw
        return blocks;
    }();
};

BlockStore& blockStore() {
    static BlockStore store;
    return store;
}

}  // namespace

void Picture::Recycle::operator()(std::uint8_t* pixels) const {
    if (bytes > 0) blockStore().giveBack(pixels, bytes);
}

void Picture::releaseMemory() { blockStore().clear(); }

std::int64_t Picture::rowBytesOf(int width, std::uint32_t format) {
    return (std::int64_t{width} * PixKit::bytesPerPixel(format) + 63) / 64 * 64;
}

std::size_t Picture::bytesOf(std::int64_t rowBytes, int height) {
    if (rowBytes * height > std::numeric_limits<std::ptrdiff_t>::max()) throw std::bad_alloc();
    return static_cast<std::size_t>(rowBytes * height);
}

Picture::Picture(int width, int height, std::uint32_t format, std::int64_t rowBytes) : format_(format) {
    const std::int64_t step = std::abs(rowBytes);
    if (width <= 0 || height <= 0 || step > std::numeric_limits<std::int32_t>::max()) throw std::bad_alloc();
    const std::size_t bytes = bytesOf(step, height);
    pixels_ = {blockStore().take(bytes), Recycle{bytes}};
    std::uint8_t* const bottom = rowBytes < 0 ? pixels_.get() + step * (height - 1) : pixels_.get();
    buffer_ = {{0, 0, width, height}, static_cast<std::int32_t>(rowBytes), 0, bottom};
    if (format != PixKit::formatBgra) vireoHostSetPixelFormat(&buffer_, format);
}

Picture::Picture(const FrameBuffer& pixels, std::uint32_t format) : buffer_(pixels), format_(format) {
    if (format != PixKit::formatBgra) vireoHostSetPixelFormat(&buffer_, format);
}

Picture::~Picture() {
    if (format_ != PixKit::formatBgra) vireoHostSetPixelFormat(&buffer_, PixKit::formatBgra);
}

void drawScaled(const Picture& picture, Picture& target, const FrameRect& area) {
    vpixCopy(picture.buffer(), target.buffer(), &picture.buffer()->bounds, &area, VPixCopyReplace);
}

}  // namespace vireo
