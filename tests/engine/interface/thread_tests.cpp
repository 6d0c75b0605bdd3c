// SPDX-License-Identifier: MIT
// Any number of threads, in a frame and beside one another, give the same bytes.
#include "tests/engine/interface/interface_support.h"

#include <atomic>
#include <cstring>
#include <thread>

namespace vireo::test {
namespace {

std::int32_t otherFrame(void*, std::int64_t frame, const VireoFrame* target, VireoTime*) {
    for (int y = 0; y < target->height; ++y) {
        auto* const row = static_cast<std::uint8_t*>(target->pixels) + y * target->stride;
        for (int i = 0; i < 4 * target->width; ++i)
            row[i] = static_cast<std::uint8_t>(37 * frame + 11 * y + 5 * i);
    }
    return 0;
}

std::vector<std::uint8_t> rendered(const ChainHandle& chain, const VireoFrame& source, int interlacing,
                                   std::int64_t frame = 11) {
    const VireoTime time = moment(frame, 40, interlacing);
    const VireoRenderOptions options{sizeof options, otherFrame, nullptr, nullptr};
    VireoFrame result{
        .structSize = sizeof result, .width = source.width, .height = source.height, .layout = source.layout};
    EXPECT_EQ(vireoChainRender(chain.get(), &source, &result, &time, &options), VireoDone) << sentence();
    auto rows = rowsOf(result);
    vireoFrameRelease(&result);
    return rows;
}

class InterfaceThreads : public testing::TestWithParam<std::uint32_t> {};

TEST_P(InterfaceThreads, RenderOneFrameAsOneDoes) {
    for (std::uint32_t seed = 0; seed < 3; ++seed) {
        const ChainHandle chain = newChain();
        ASSERT_EQ(vireoChainAddFilter(chain.get(), GetParam()), VireoDone);
        if (seed > 0) setAllAtRandom(chain, 0, seed);
        if (seed == 2) {
            ASSERT_EQ(vireoChainSet(chain.get(), 0, VireoMix, "37"), VireoDone);
        }
        // The last is high enough for bands of filters that look far up and down.
        for (const int height : {1, 2, 3, 17, 33, 241, 1700}) {
            Pixels source(height > 1000 ? 9 : 37, height, {.isBottomUp = seed == 1}, seed);
            for (const int interlacing : {0, 2}) {
                ASSERT_EQ(vireoChainSetThreads(chain.get(), 1), VireoDone);
                const auto expected = rendered(chain, source.frame, interlacing);
                for (std::uint32_t threads = 2; threads <= 5; ++threads) {
                    ASSERT_EQ(vireoChainSetThreads(chain.get(), threads), VireoDone);
                    EXPECT_EQ(rendered(chain, source.frame, interlacing), expected)
                        << textOf(chain) << ", " << height << " rows, " << threads << " threads, interlacing "
                        << interlacing;
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Filters, InterfaceThreads, testing::Range(0U, 22U), [](const auto& tested) {
    VireoFilter filter{.structSize = sizeof filter};
    EXPECT_EQ(vireoDescribeFilter(engine(), tested.param, &filter), VireoDone);
    return std::string(filter.fileName);
});

TEST(InterfaceThreads, RenderOneChainSideBySide) {
    const ChainHandle timed = newChain(
                          "Solarize:threshold=0@0f..250@30f; Ghosting; Camera Blur:percent blur=5,mix=60"),
                      other = newChain("Levels:(rgb) gamma=130; Antialias; Ghosting");
    ASSERT_EQ(vireoChainSetThreads(timed.get(), 3), VireoDone);
    Pixels source(61, 90, {.layout = VireoRgba}, 1);
    constexpr int frames = 24;
    std::vector<std::vector<std::uint8_t>> expected;
    for (const ChainHandle* chain : {&timed, &other}) {
        for (int frame = 0; frame < frames; ++frame)
            expected.push_back(rendered(*chain, source.frame, 0, frame));
    }
    // Fresh copies: what is made at the first frame is made by several at once.
    const ChainHandle copies[] = {copyOf(timed), copyOf(other)};
    std::atomic<int> next = 0, wrong = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int item; (item = next++) < 2 * frames;) {
                const int chain = item % 2, frame = item / 2;
                const auto rows = rendered(copies[chain], source.frame, 0, frame);
                if (rows != expected[static_cast<std::size_t>(chain * frames + frame)]) ++wrong;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
}

TEST(InterfaceThreads, OpenEnginesAndDescribeFiltersSideBySide) {
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (const char* language : {"en", "de", "ja", "fr"}) {
        threads.emplace_back([language, &wrong] {
            for (int i = 0; i < 5; ++i) {
                VireoEngine* opened = nullptr;
                const VireoOpenOptions options{sizeof options, nullptr, language};
                VireoFilter filter{.structSize = sizeof filter};
                if (vireoOpen(&options, &opened) != VireoDone ||
                    vireoDescribeFilter(opened, 4, &filter) != VireoDone ||
                    std::strcmp(filter.englishName, "Camera View") != 0)
                    ++wrong;
                vireoClose(opened);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace vireo::test
