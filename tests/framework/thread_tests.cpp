// SPDX-License-Identifier: MIT
// All filters on several threads at once, from the first call after the module is initialised: what they make
// or remember at first use is made and remembered here. The thread sanitizer watches.
#include "host/hosting/filter_instance.h"
#include "host/hosting/meta_plugin.h"
#include "host/vireo_host.h"

#include <gtest/gtest.h>

#include <atomic>
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

std::vector<std::uint8_t> rendered(const hosting::Filter& filter, const Buffer& source,
                                   const Buffer& destination) {
    hosting::FrameRequest request{source.get(), destination.get(), 20, 100};
    request.getFrame = earlierFrame;
    EXPECT_EQ(hosting::FilterInstance(filter.entry).render(request), 0) << filter.properties.name;
    return bytesOf(destination);
}

TEST(Threads, RenderEveryFilterFromItsFirstCallOn) {
    constexpr int threadCount = 4;
    const hosting::MetaPlugin module(VIREO_TESTED_MODULE);
    ASSERT_FALSE(module.filters().empty());
    const Buffer source = newBuffer();
    std::mt19937 random;
    for (std::int32_t y = 0; y < bounds.bottom; ++y) {
        for (std::int32_t x = 0; x < bounds.right; ++x) {
            const FrameRect pixel{x, y, x + 1, y + 1};
            vpixFillRect(source.get(), &pixel, static_cast<std::uint32_t>(random()));
        }
    }

    // All threads meet before each filter. From there to what it keeps they share nothing that would put
    // their calls in an order, so that the sanitizer sees every access without a guard.
    std::atomic<std::size_t> arrivals = 0;
    std::vector<std::vector<std::uint8_t>> results[threadCount];
    std::vector<std::thread> threads;
    for (auto& pictures : results) {
        threads.emplace_back([&] {
            std::size_t meeting = 0;
            for (const hosting::Filter& filter : module.filters()) {
                const Buffer destination = newBuffer();
                meeting += threadCount;
                // The compiler's barrier may sleep for ever on Windows.
                for (++arrivals; arrivals < meeting;) std::this_thread::yield();
                pictures.push_back(rendered(filter, source, destination));
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (std::size_t i = 0; i < module.filters().size(); ++i) {
        const auto expected = rendered(module.filters()[i], source, newBuffer());
        for (const auto& pictures : results) {
            EXPECT_EQ(pictures[i], expected) << module.filters()[i].properties.name;
        }
    }
}

}  // namespace
