// SPDX-License-Identifier: MIT
// Any number of threads, in a frame and beside one another, give the same bytes.
#include "tests/engine/interface/interface_support.h"

#include <atomic>
#include <cstring>
#include <functional>
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

std::vector<std::uint8_t> renderedAt(const ChainHandle& chain, const VireoFrame& source, int interlacing,
                                     std::int64_t frame = 11) {
    const VireoTime time = moment(frame, 40, interlacing);
    const VireoRenderOptions options{sizeof options, otherFrame, nullptr, nullptr};
    return rendered(chain, source, &time, &options);
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
        // The last is high enough for three bands of filters that look far up and down.
        for (const int height : {1, 2, 3, 17, 31, 33, 48, 241, 2500}) {
            Pixels source(height > 1000 ? 9 : 37, height, {.isBottomUp = seed == 1}, seed);
            for (const int interlacing : {0, 2}) {
                ASSERT_EQ(vireoChainSetThreads(chain.get(), 1), VireoDone);
                const auto expected = renderedAt(chain, source.frame, interlacing);
                for (const std::uint32_t threads : {2, 3, 5}) {
                    ASSERT_EQ(vireoChainSetThreads(chain.get(), threads), VireoDone);
                    EXPECT_EQ(renderedAt(chain, source.frame, interlacing), expected)
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

/// Each of four threads does the same beside the others.
void expectRightOnThreads(const std::function<bool(int thread)>& isRight) {
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) threads.emplace_back([&, i] { wrong += isRight(i) ? 0 : 1; });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
}

TEST(InterfaceThreads, RenderOneChainSideBySide) {
    const ChainHandle chains[] = {
        newChain("Solarize:threshold=0@0f..250@30f; Ghosting; Camera Blur:percent blur=5,mix=60"),
        newChain("Levels:(rgb) gamma=130; Antialias; Ghosting")};
    ASSERT_EQ(vireoChainSetThreads(chains[0].get(), 3), VireoDone);
    Pixels source(61, 90, {.layout = VireoRgba}, 1);
    std::vector<std::vector<std::uint8_t>> expected;
    for (int item = 0; item < 48; ++item)
        expected.push_back(renderedAt(chains[item % 2], source.frame, 0, item / 2));
    // Fresh copies: what is made at the first frame is made by several at once.
    const ChainHandle copies[] = {copyOf(chains[0]), copyOf(chains[1])};
    std::atomic<std::size_t> next = 0;
    expectRightOnThreads([&](int) {
        bool isRight = true;
        for (std::size_t item; (item = next++) < expected.size();) {
            const auto frame = static_cast<std::int64_t>(item / 2);
            isRight &= renderedAt(copies[item % 2], source.frame, 0, frame) == expected[item];
        }
        return isRight;
    });
}

TEST(InterfaceThreads, OpenEnginesAndDescribeFiltersSideBySide) {
    expectRightOnThreads([](int thread) {
        const char* const languages[] = {"en", "de", "ja", "fr"};
        bool isRight = true;
        for (int i = 0; i < 5; ++i) {
            VireoEngine* opened = nullptr;
            const VireoOpenOptions options{sizeof options, nullptr, languages[thread]};
            VireoFilter filter{.structSize = sizeof filter};
            isRight &= vireoOpen(&options, &opened) == VireoDone &&
                       vireoDescribeFilter(opened, 4, &filter) == VireoDone &&
                       std::strcmp(filter.englishName, "Camera View") == 0;
            vireoClose(opened);
        }
        return isRight;
    });
}

}  // namespace
}  // namespace vireo::test
