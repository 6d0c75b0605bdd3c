// SPDX-License-Identifier: MIT
// Any number of threads, in a frame and beside one another, give the same bytes.
#include "engine/chain/worker_pool.h"
#include "tests/engine/interface/interface_support.h"
#include "tests/engine/support/fake_filters.h"

#include <array>
#include <atomic>
#include <cstring>
#include <deque>
#include <numeric>
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

const VireoRenderOptions options{sizeof options, otherFrame, nullptr, nullptr};

class InterfaceThreads : public testing::TestWithParam<std::uint32_t> {};

// Filters that step through rows with their gaps must not write into what lies between a caller's rows.
TEST_P(InterfaceThreads, RenderOneFrameAsOneDoesAndKeepToItsRows) {
    for (std::uint32_t seed = 0; seed < 4; ++seed) {
        const ChainHandle chain = newChain();
        ASSERT_EQ(vireoChainAddFilter(chain.get(), GetParam()), VireoDone);
        if (seed > 0) setAllAtRandom(chain, 0, seed);
        if (seed == 2) {
            ASSERT_EQ(vireoChainSet(chain.get(), 0, VireoMix, "37"), VireoDone);
        }
        for (const int height : {1, 2, 3, 17, 31, 33, 48, 241, 2500}) {
            // High enough for three bands of filters that look far up and down.
            if (height == 2500 && seed > 1) continue;
            const Lie lie{.isBottomUp = seed % 2 == 1, .gap = seed == 1 ? 0 : 60};
            const int width = height > 1000 ? 9 : 37;
            Pixels source(width, height, lie, seed);
            for (const int interlacing : {0, 2}) {
                const VireoTime time = moment(11, 40, interlacing);
                ASSERT_EQ(vireoChainSetThreads(chain.get(), 1), VireoDone);
                const auto expected = rendered(chain, source.frame, &time, &options);
                for (const std::uint32_t threads : {1, 2, 5}) {
                    Pixels result(width, height, lie, seed + 1);
                    ASSERT_EQ(vireoChainSetThreads(chain.get(), threads), VireoDone);
                    ASSERT_EQ(vireoChainRender(chain.get(), &source.frame, &result.frame, &time, &options),
                              VireoDone);
                    EXPECT_TRUE(result.guardsHold() && rowsOf(result.frame) == expected)
                        << textOf(chain) << ", " << height << " rows, " << lie << ", " << threads
                        << " threads, interlacing " << interlacing;
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

// Filters that work by rows pass a few rows at a time on to one another, and those that map channels become
// one table.
TEST(InterfaceThreads, RenderChainsAsTheirFiltersOneAfterAnother) {
    std::vector<std::uint32_t> all(22), byRows, tables;
    std::iota(all.begin(), all.end(), 0);
    for (const char* name : {"Levels", "Color Balance (RGB)", "Gamma Correction"}) {
        vireoFindFilter(engine(), name, &tables.emplace_back());
    }
    byRows = tables;
    for (const char* name : {"Solarize", "Horizontal Flip", "Color Replace"}) {
        vireoFindFilter(engine(), name, &byRows.emplace_back());
    }
    std::mt19937 random(5);
    int rendersInPlace = 0;
    for (int round = 0; round < 90; ++round) {
        const std::vector<std::uint32_t>& known = *std::array{&all, &byRows, &tables}[random() % 3];
        std::vector<ChainHandle> filters;
        std::string text;
        while (filters.size() < 2 + random() % 4) {
            ChainHandle filter = newChain();
            ASSERT_EQ(vireoChainAddFilter(filter.get(), known[random() % known.size()]), VireoDone);
            setAllAtRandom(filter, 0, random());
            if (random() % 3 == 0) {
                ASSERT_EQ(vireoChainSet(filter.get(), 0, VireoMix, "0%@0f..90%@20f"), VireoDone);
            }
            VireoNeeds needs{.structSize = sizeof needs};
            ASSERT_EQ(vireoChainNeeds(filter.get(), &needs), VireoDone);
            if (needs.earlierFrames > 0) continue;
            text += (text.empty() ? "" : "; ") + textOf(filter);
            filters.push_back(std::move(filter));
        }
        static constexpr std::pair<int, int> sizes[] = {{37, 61}, {1, 1}, {3000, 70}};
        const auto [width, height] = sizes[round % 3];
        const Lie lie{.isBottomUp = round % 2 == 1, .gap = round % 4 == 0 ? 0 : 60};
        const VireoTime time = moment(11, 40, round % 5 == 0 ? 2 : 0);
        std::deque<Pixels> steps;
        steps.emplace_back(width, height, lie, round);
        for (const ChainHandle& filter : filters) {
            const VireoFrame& source = steps.back().frame;
            steps.emplace_back(width, height, lie, round);
            ASSERT_EQ(vireoChainRender(filter.get(), &source, &steps.back().frame, &time, &options),
                      VireoDone);
        }
        const ChainHandle chain = newChain(text);
        for (const std::uint32_t threads : {1, 3}) {
            ASSERT_EQ(vireoChainSetThreads(chain.get(), threads), VireoDone);
            EXPECT_EQ(rendered(chain, steps.front().frame, &time, &options), rowsOf(steps.back().frame))
                << text << ", " << width << " x " << height << ", " << lie;
        }

        // Over the source.
        const FilterChain engines = engineChain(text);
        const std::shared_ptr<Picture> picture = steps.front().picture();
        const FramePosition position{11, 40, 11 / 25.0, 25, static_cast<Interlacing>(time.interlacing)};
        if (!engines.rendersInPlace(*picture, position)) continue;
        ++rendersInPlace;
        WorkerPool workers(1 + round % 3);
        const Clip none({});
        EXPECT_EQ(engines.render({picture, position, none, *engines.newMemory(1), {&workers, {}}, picture}),
                  picture);
        EXPECT_TRUE(steps.back().holds(*picture)) << text << ", " << width << " x " << height;
    }
    EXPECT_GT(rendersInPlace, 20);
    EXPECT_LT(rendersInPlace, 70);
}

TEST(InterfaceThreads, RenderOneChainAndOpenEnginesSideBySide) {
    const ChainHandle chains[] = {
        newChain("Solarize:threshold=0@0f..250@30f; Ghosting; Camera Blur:percent blur=5,mix=60"),
        newChain("Levels:(rgb) gamma=130; Antialias; Ghosting")};
    ASSERT_EQ(vireoChainSetThreads(chains[0].get(), 3), VireoDone);
    Pixels source(61, 90, {.layout = VireoRgba}, 1);
    const auto item = [&](const ChainHandle(&of)[2], std::size_t number) {
        const VireoTime time = moment(static_cast<std::int64_t>(number / 2), 40);
        return rendered(of[number % 2], source.frame, &time, &options);
    };
    std::vector<std::vector<std::uint8_t>> expected;
    for (std::size_t number = 0; number < 48; ++number) expected.push_back(item(chains, number));
    // Fresh copies: what is made at the first frame is made by several at once.
    const ChainHandle copies[] = {copyOf(chains[0]), copyOf(chains[1])};
    std::atomic<std::size_t> next = 0, wrong = 0;
    std::vector<std::thread> threads;
    for (const char* language : {"en", "de", "ja", "fr"}) {
        threads.emplace_back([&, language] {
            VireoEngine* opened = nullptr;
            const VireoOpenOptions open{sizeof open, nullptr, language};
            VireoFilter filter{.structSize = sizeof filter};
            for (std::size_t number; (number = next++) < expected.size();) {
                if (vireoOpen(&open, &opened) != VireoDone ||
                    vireoDescribeFilter(opened, 4, &filter) != VireoDone ||
                    std::strcmp(filter.englishName, "Camera View") != 0 ||
                    item(copies, number) != expected[number])
                    ++wrong;
                vireoClose(opened);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0U);
}

}  // namespace
}  // namespace vireo::test
