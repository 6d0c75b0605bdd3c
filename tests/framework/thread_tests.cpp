// SPDX-License-Identifier: MIT
// All filters on several threads at once, from the first call after the module is initialised: what they make
// or remember at first use is made and remembered here. The thread sanitizer watches.
#include "host/vireo_host.h"
#include "host/vrm/filter_instance.h"
#include "host/vrm/meta_plugin.h"

#include <gtest/gtest.h>

#include <cstring>
#include <latch>
#include <memory>
#include <random>
#include <thread>
#include <vector>

namespace {

constexpr FrameRect bounds{0, 0, 53, 37};

using Buffer = std::unique_ptr<FrameBuffer, decltype(&vpixDispose)>;

Buffer newBuffer() { return {vpixNew(&bounds), vpixDispose}; }

std::vector<std::uint8_t> bytesOf(const Buffer& buffer) {
    const auto* const pixels = static_cast<const std::uint8_t*>(vpixGetPixels(buffer.get()));
    return {pixels, pixels + vpixGetRowbytes(buffer.get()) * (bounds.bottom - bounds.top)};
}

std::int32_t earlierFrame(std::uint32_t time, FrameBuffer* target, const FrameRect* rect, void*) {
    vpixFillRect(target, rect, 0xFF000000 | time * 0x010305);
    return 0;
}

/// Every filter's picture, from the first'th on and round.
std::vector<std::vector<std::uint8_t>> renderAll(const VRM::MetaPlugin& module, const Buffer& source,
                                                 std::size_t first) {
    const auto& filters = module.filters();
    std::vector<std::vector<std::uint8_t>> pictures(filters.size());
    for (std::size_t i = 0; i < filters.size(); ++i) {
        const std::size_t index = (first + i) % filters.size();
        const VRM::FilterInstance filter(filters[index].entry);
        const Buffer destination = newBuffer();
        VRM::FrameRequest request{source.get(), destination.get(), 20, 100};
        request.getFrame = earlierFrame;
        EXPECT_EQ(filter.render(request), 0) << filters[index].properties.name;
        pictures[index] = bytesOf(destination);
    }
    return pictures;
}

TEST(Threads, RenderEveryFilterFromItsFirstCallOn) {
    constexpr int threadCount = 4;
    const VRM::MetaPlugin module(VIREO_TESTED_MODULE);
    ASSERT_FALSE(module.filters().empty());
    const Buffer source = newBuffer();
    std::mt19937 random;
    for (std::int32_t y = 0; y < bounds.bottom; ++y) {
        for (std::int32_t x = 0; x < bounds.right; ++x) {
            const FrameRect pixel{x, y, x + 1, y + 1};
            vpixFillRect(source.get(), &pixel, static_cast<std::uint32_t>(random()));
        }
    }

    std::vector<std::vector<std::vector<std::uint8_t>>> results(threadCount);
    std::latch start(threadCount);
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i) {
        // Two threads each meet in the same filter; all meet in the host.
        const std::size_t first = static_cast<std::size_t>(i / 2) * module.filters().size() / 2;
        threads.emplace_back([&, i, first] {
            start.arrive_and_wait();
            results[static_cast<std::size_t>(i)] = renderAll(module, source, first);
        });
    }
    for (std::thread& thread : threads) thread.join();
    const auto expected = renderAll(module, source, 0);
    for (const auto& result : results) EXPECT_EQ(result, expected);
}

}  // namespace
