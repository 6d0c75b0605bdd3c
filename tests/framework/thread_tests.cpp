// SPDX-License-Identifier: MIT
// All filters on several threads at once, from the first call after the module is initialised: what they make
// or remember at first use is made and remembered here. The thread sanitizer watches.
#include "host/hosting/filter_instance.h"
#include "host/hosting/meta_plugin.h"
#include "host/vireo_host.h"
#include "tests/support/test_frame.h"

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace {

constexpr Geometry geometry{.width = 53, .height = 37};

std::int32_t earlierFrame(std::uint32_t time, FrameBuffer* target, const FrameRect* rect, void*) {
    vpixFillRect(target, rect, 0xFF000000 | time * 0x010305);
    return 0;
}

void render(const hosting::Filter& filter, TestFrame& source, TestFrame& destination) {
    hosting::FrameRequest request{source.handle(), destination.handle(), 20, 100};
    request.getFrame = earlierFrame;
    EXPECT_EQ(hosting::FilterInstance(filter.entry).render(request), 0) << filter.properties.name;
}

TEST(Threads, RenderEveryFilterFromItsFirstCallOn) {
    constexpr int threadCount = 4;
    const hosting::MetaPlugin module(VIREO_TESTED_MODULE);
    Random random;
    TestFrame source(geometry, random);

    // All threads meet before each filter. From there to what it keeps they share nothing that would put
    // their calls in an order, so that the sanitizer sees every access without a guard.
    std::atomic<std::size_t> arrivals = 0;
    std::vector<Picture> results[threadCount];
    std::vector<std::thread> threads;
    for (std::vector<Picture>& pictures : results) {
        // Frames are made one after another.
        threads.emplace_back([&, destination = std::make_shared<TestFrame>(geometry)] {
            std::size_t meeting = 0;
            for (const hosting::Filter& filter : module.filters()) {
                meeting += threadCount;
                // The compiler's barrier may sleep for ever on Windows.
                for (++arrivals; arrivals < meeting;) std::this_thread::yield();
                render(filter, source, *destination);
                pictures.push_back(destination->picture());
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (std::size_t i = 0; i < module.filters().size(); ++i) {
        TestFrame expected(geometry);
        render(module.filters()[i], source, expected);
        for (const auto& pictures : results) {
            EXPECT_TRUE(samePicture(expected.picture(), pictures[i])) << module.filters()[i].properties.name;
        }
    }
}

}  // namespace
