// SPDX-License-Identifier: MIT
// Where a frame stands in its clip, the frames before it, streams, and being cancelled.
#include "tests/engine/interface/interface_support.h"

#include <algorithm>
#include <atomic>
#include <cmath>

namespace vireo::test {
namespace {

constexpr int width = 24, height = 18;

/// A clip in the caller's memory, as the engine's chain sees it, and as the callback for earlier frames.
class CallersClip : public SourceHistory {
public:
    CallersClip(int frames, const Lie& lie, int interlacing = 0, std::uint32_t seed = 1)
        : interlacing_(interlacing) {
        for (int i = 0; i < frames; ++i)
            frames_.emplace_back(width, height, lie, seed + static_cast<std::uint32_t>(i));
    }

    std::int64_t first = 0;  ///< Stands for those before it.
    std::int64_t lost = 0;   ///< From this one on frames did not come,
    std::int64_t back = 0;   ///< until this one.
    double delay = 0;        ///< Seconds that odd frames come late.

    const VireoFrame* operator[](std::int64_t frame) const { return &pixels(frame).frame; }
    VireoTime time(std::int64_t frame) const {
        VireoTime time = moment(frame, std::ssize(frames_), interlacing_);
        time.seconds = static_cast<double>(frame) / time.rate + (frame % 2 == 0 ? 0 : delay);
        return time;
    }

    PicturePtr frame(std::int64_t number) const override { return pixels(nearest(number)).picture(); }
    FramePosition position(std::int64_t number) const override {
        const VireoTime at = time(nearest(number));
        return {at.frame, at.frames, at.seconds, at.rate, static_cast<Interlacing>(interlacing_)};
    }

    PicturePtr expected(const FilterChain& chain, std::int64_t number) const {
        return chain.render({frame(number), position(number), *this, *chain.newMemory(1)});
    }

    VireoRenderOptions options() { return {sizeof(VireoRenderOptions), fetch, nullptr, this}; }

private:
    std::int64_t nearest(std::int64_t number) const {
        const std::int64_t known = std::max(number, first);
        return known >= lost && known < back ? lost - 1 : known;
    }

    const Pixels& pixels(std::int64_t frame) const { return frames_.at(static_cast<std::size_t>(frame)); }

    static std::int32_t fetch(void* user, std::int64_t frame, const VireoFrame* target, VireoTime* time) {
        const auto& clip = *static_cast<const CallersClip*>(user);
        const VireoTime there = clip.time(frame);
        EXPECT_EQ(time->frame, frame);
        EXPECT_EQ(time->frames, there.frames);
        time->seconds = there.seconds;
        EXPECT_EQ(target->layout, clip[frame]->layout);
        EXPECT_EQ(target->premultiplied, clip[frame]->premultiplied);
        const auto rows = rowsOf(*clip[frame]);
        const std::int64_t rowBytes = std::ssize(rows) / height;
        for (int y = 0; y < height; ++y) {
            std::copy_n(rows.data() + y * rowBytes, rowBytes,
                        static_cast<std::uint8_t*>(target->pixels) + y * target->stride);
        }
        return 0;
    }

    std::vector<Pixels> frames_;
    int interlacing_;
};

const char* const timedChains[] = {
    "Solarize:threshold=0@0f..250@9f",
    "Ghosting",
    ("Solarize:threshold=10@0s..smooth..250@0.3s; Ghosting; Color Balance:red=90,from=3f; "
     "Ghosting:mix=40@2f..90@8f"),
    "Bend:horizontal intensity=20; Vertical Hold; Horizontal Hold:offset=70000",
};

class InterfaceTimedChains : public testing::TestWithParam<const char*> {
protected:
    const FilterChain expected = engineChain(GetParam());
    const ChainHandle chain = newChain(GetParam());
};

TEST_P(InterfaceTimedChains, RenderWithFramesFromACallback) {
    VireoNeeds needs{.structSize = sizeof needs};
    ASSERT_EQ(vireoChainNeeds(chain.get(), &needs), VireoDone);
    EXPECT_EQ(needs.readsTime, 1);
    EXPECT_EQ(static_cast<int>(needs.earlierFrames), expected.lookBack());
    for (const int interlacing : {0, 1, 2}) {
        for (const Lie& lie :
             {Lie{}, Lie{.layout = VireoArgb, .premultiplied = true, .isBottomUp = true, .gap = 5}}) {
            CallersClip clip(14, lie, interlacing, lie.gap == 0 ? 1 : 1000);
            clip.delay = 0.03 * interlacing;
            const VireoRenderOptions options = clip.options();
            // In an order that no player has: nothing is remembered from one call, or clip, to the next.
            for (const std::int64_t frame : {13, 0, 4, 9, 1}) {
                const VireoTime time = clip.time(frame);
                Pixels result(width, height, lie, 99);
                ASSERT_EQ(vireoChainRender(chain.get(), clip[frame], &result.frame, &time, &options),
                          VireoDone)
                    << sentence();
                EXPECT_TRUE(result.holds(*clip.expected(expected, frame)))
                    << "frame " << frame << ", interlacing " << interlacing;
            }
        }
    }
}

class InterfaceStreams : public InterfaceTimedChains {
protected:
    const StreamHandle stream = newStream(chain), beside = newStream(chain);

    /// So many frames from one on.
    void expectRendered(const StreamHandle& by, const CallersClip& clip, std::int64_t first, int frames) {
        for (std::int64_t frame = first; frame < first + frames; ++frame) {
            const VireoTime time = clip.time(frame);
            Pixels result(width, height, {.layout = VireoRgba, .gap = 3}, 9);
            ASSERT_EQ(vireoStreamRender(by.get(), clip[frame], &result.frame, &time), VireoDone)
                << sentence();
            EXPECT_TRUE(result.holds(*clip.expected(expected, frame))) << "frame " << frame;
        }
    }
};

TEST_P(InterfaceStreams, KeepTheFramesThatTheChainNeeds) {
    for (const int interlacing : {0, 1, 2}) {
        const CallersClip clip(24, {}, interlacing), other(24, {}, 0, 1000);
        for (std::int64_t frame = 0; frame < 24; ++frame) {
            if (frame == 8) {  // fails and hurts nothing
                const VireoTime time = clip.time(frame);
                Pixels higher(width, height + 1, {}, 1);
                EXPECT_EQ(vireoStreamRender(stream.get(), clip[frame], &higher.frame, &time), VireoUsage);
            }
            if (frame == 15) {
                ASSERT_EQ(vireoChainAddText(chain.get(), "Horizontal Flip"), VireoDone);
                ASSERT_EQ(vireoChainRemove(chain.get(), vireoChainLength(chain.get()) - 1), VireoDone);
            }
            expectRendered(stream, clip, frame, 1);
            expectRendered(beside, other, frame, 1);
        }
    }
}

TEST_P(InterfaceStreams, BeginAnewAtAGapARestartAndAnotherSize) {
    CallersClip clip(24, {});
    for (const auto& [first, frames] : {std::pair{0, 4}, {12, 3}, {5, 2}, {7, 2}, {10, 2}}) {
        if (first == 7) {
            ASSERT_EQ(vireoStreamRestart(stream.get()), VireoDone);
        }
        if (first == 10) {
            Pixels small(8, 8, {}, 1), result(8, 8, {}, 1);
            const VireoTime time = clip.time(9);
            ASSERT_EQ(vireoStreamRender(stream.get(), &small.frame, &result.frame, &time), VireoDone);
        }
        clip.first = first;
        expectRendered(stream, clip, first, frames);
    }
}

TEST_P(InterfaceStreams, GoOnBehindLostFrames) {
    CallersClip clip(24, {});
    expectRendered(stream, clip, 0, 6);
    clip.lost = 6;
    clip.back = 9;
    ASSERT_EQ(vireoStreamSkip(stream.get(), 9), VireoDone);
    expectRendered(stream, clip, 9, 12);
    // Back in time nothing goes on, and a skip is for one frame alone.
    for (const std::int64_t first : {4, 12}) {
        ASSERT_EQ(vireoStreamSkip(stream.get(), 4), VireoDone);
        clip.first = first;
        expectRendered(stream, clip, first, 2);
    }
}

INSTANTIATE_TEST_SUITE_P(Chains, InterfaceTimedChains, testing::ValuesIn(timedChains));
INSTANTIATE_TEST_SUITE_P(Chains, InterfaceStreams, testing::ValuesIn(timedChains));

TEST(InterfaceStreams, CountTheirFrames) {
    const ChainHandle chain = newChain(timedChains[0]);
    const StreamHandle stream = newStream(chain);
    Pixels source(width, height, {}, 1), result(width, height, {}, 2);
    const auto expectShown = [&](std::int64_t shown, const VireoTime* time) {
        const VireoTime counted = moment(shown);
        EXPECT_EQ(vireoStreamRender(stream.get(), &source.frame, &result.frame, time), VireoDone);
        EXPECT_EQ(rowsOf(result.frame), rendered(chain, source.frame, &counted)) << shown;
    };
    const VireoTime time = moment(7);
    expectShown(0, nullptr);
    expectShown(1, nullptr);
    expectShown(7, &time);
    expectShown(8, nullptr);
    ASSERT_EQ(vireoStreamRestart(stream.get()), VireoDone);
    expectShown(0, nullptr);
}

TEST(InterfaceTime, EndsACallThatCannotHaveAFrame) {
    const ChainHandle chain = newChain("Solarize; Ghosting");
    const CallersClip source(1, {});
    Pixels result(width, height, {}, 2);
    const VireoTime time = moment(9);
    VireoRenderOptions options{
        sizeof options,
        [](void*, std::int64_t frame, const VireoFrame*, VireoTime*) { return frame == 7 ? 1 : 0; }, nullptr,
        nullptr};
    EXPECT_EQ(vireoChainRender(chain.get(), source[0], &result.frame, &time, &options), VireoNoFrame);
    EXPECT_EQ(sentence(), "frame 7 is not there");
    options.earlierFrame = [](void*, std::int64_t, const VireoFrame*, VireoTime* changed) {
        changed->seconds = std::nan("");
        return 0;
    };
    EXPECT_EQ(vireoChainRender(chain.get(), source[0], &result.frame, &time, &options), VireoUsage);
    // Without a callback the source stands for the frames before.
    ASSERT_EQ(vireoChainRender(chain.get(), source[0], &result.frame, &time, nullptr), VireoDone);
    EXPECT_TRUE(result.holds(*source.expected(engineChain("Solarize; Ghosting"), 0)));
}

TEST(InterfaceTime, IsCancelledForGood) {
    struct Asked {
        std::atomic<int> calls = 0;
        int yes = 0;
        static std::int32_t ask(void* user) {
            auto& asked = *static_cast<Asked*>(user);
            return ++asked.calls == asked.yes ? 1 : 0;
        }
    };
    const ChainHandle chain = newChain("Solarize; Levels; Replicate");
    for (const std::uint32_t threads : {1U, 3U}) {
        ASSERT_EQ(vireoChainSetThreads(chain.get(), threads), VireoDone);
        Pixels source(40, 400, {}, 1), result(40, 400, {}, 2);
        const auto render = [&](Asked& asked) {
            const VireoRenderOptions options{sizeof options, nullptr, Asked::ask, &asked};
            return vireoChainRender(chain.get(), &source.frame, &result.frame, nullptr, &options);
        };
        Asked never;
        EXPECT_EQ(render(never), VireoDone);
        EXPECT_GE(never.calls, 3);
        // Whoever says so once and takes it back gets no frame with a part missing.
        for (int yes = 1; yes <= never.calls; ++yes) {
            Asked once{.yes = yes};
            EXPECT_EQ(render(once), VireoCancelled) << yes << " of " << never.calls;
        }
        EXPECT_EQ(sentence(), "rendering was cancelled");
    }
}

}  // namespace
}  // namespace vireo::test
