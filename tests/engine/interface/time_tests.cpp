// SPDX-License-Identifier: MIT
// Where a frame stands in its clip, the frames before it, streams, and being cancelled.
#include "tests/engine/interface/interface_support.h"
#include "tests/engine/support/fake_filters.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <map>

namespace vireo::test {
namespace {

constexpr int width = 24, height = 18;

/// A clip in the caller's memory, in the engine's as pictures, and as the callback for earlier frames.
class CallersClip {
public:
    CallersClip(int frames, const Lie& lie, int interlacing = 0, std::uint32_t seed = 1)
        : interlacing_(interlacing) {
        for (int i = 0; i < frames; ++i)
            frames_.emplace_back(width, height, lie, seed + static_cast<std::uint32_t>(i));
    }

    int size() const { return static_cast<int>(frames_.size()); }
    Pixels& operator[](std::int64_t frame) { return frames_.at(static_cast<std::size_t>(frame)); }
    VireoTime time(std::int64_t frame) const { return moment(frame, size(), interlacing_); }

    /// What the engine's chain makes of a frame; before `first` there is `first` itself.
    PicturePtr expected(const FilterChain& chain, std::int64_t frame, std::int64_t first = 0) {
        std::vector<PicturePtr> pictures;
        for (std::int64_t i = 0; i < size(); ++i) pictures.push_back((*this)[i].picture());
        const Clip clip(std::move(pictures), static_cast<Interlacing>(interlacing_));
        const Beginning history(clip, first);
        return chain.render({clip.frame(frame), clip.position(frame), history, *chain.newMemory(1)});
    }

    VireoRenderOptions options() { return {sizeof(VireoRenderOptions), fetch, nullptr, this}; }

    static std::int32_t fetch(void* user, std::int64_t frame, const VireoFrame* target, VireoTime* time) {
        auto& clip = *static_cast<CallersClip*>(user);
        ++clip.asked;
        EXPECT_EQ(time->frame, frame);
        EXPECT_EQ(time->frames, clip.size());
        const VireoFrame& from = clip[frame].frame;
        EXPECT_EQ(target->layout, from.layout);
        EXPECT_EQ(target->premultiplied, from.premultiplied);
        const auto rows = rowsOf(from);
        const std::size_t rowBytes = rows.size() / height;
        for (int y = 0; y < height; ++y) {
            std::copy_n(rows.data() + static_cast<std::size_t>(y) * rowBytes, rowBytes,
                        static_cast<std::uint8_t*>(target->pixels) + y * target->stride);
        }
        return 0;
    }

    int asked = 0;

private:
    /// A clip as it is seen by those who came at a frame.
    class Beginning : public SourceHistory {
    public:
        Beginning(const Clip& clip, std::int64_t first) : clip_(clip), first_(first) {}
        PicturePtr frame(std::int64_t number) const override { return clip_.frame(std::max(number, first_)); }
        FramePosition position(std::int64_t number) const override {
            return clip_.position(std::max(number, first_));
        }

    private:
        const Clip& clip_;
        std::int64_t first_;
    };

    std::vector<Pixels> frames_;
    int interlacing_;
};

const char* const timedChains[] = {
    "Solarize:threshold=0@0f..250@9f",
    "Ghosting",
    "Solarize:threshold=10@0s..smooth..250@0.3s; Ghosting; Color Balance:red=90,from=3f; "
    "Ghosting:mix=40@2f..90@8f",
    "Bend:horizontal intensity=20; Vertical Hold; Horizontal Hold:offset=70000",
};

TEST(InterfaceTime, IsTheChainsWithFramesFromACallback) {
    for (const std::string text : timedChains) {
        const FilterChain expected = engineChain(text);
        const ChainHandle chain = newChain(text);
        VireoNeeds needs{.structSize = sizeof needs};
        ASSERT_EQ(vireoChainNeeds(chain.get(), &needs), VireoDone);
        EXPECT_EQ(needs.readsTime, 1);
        EXPECT_EQ(static_cast<int>(needs.earlierFrames), expected.lookBack());
        for (const int interlacing : {0, 1, 2}) {
            for (const Lie& lie :
                 {Lie{}, Lie{.layout = VireoArgb, .premultiplied = true, .isBottomUp = true, .gap = 5}}) {
                CallersClip clip(14, lie, interlacing);
                const VireoRenderOptions options = clip.options();
                // In an order that no player has: nothing is remembered from one call to the next.
                for (const std::int64_t frame : {13, 0, 4, 9, 1}) {
                    const VireoTime time = clip.time(frame);
                    Pixels result(width, height, lie, 99);
                    ASSERT_EQ(
                        vireoChainRender(chain.get(), &clip[frame].frame, &result.frame, &time, &options),
                        VireoDone)
                        << sentence();
                    EXPECT_TRUE(result.holds(*clip.expected(expected, frame)))
                        << text << ", frame " << frame << ", interlacing " << interlacing;
                }
                EXPECT_EQ(clip.asked > 0, needs.earlierFrames > 0);
            }
        }
    }
}

TEST(InterfaceTime, StandsStillForFramesFromACallbackThatSaysSo) {
    // At 25 frames a second the frame before would be at 0.96 s; it stands at 0.5 s.
    const ChainHandle chain = newChain("Solarize:threshold=0@0.5s..200@1s; Ghosting");
    struct Frames {
        std::map<std::int64_t, double> seconds;
        static std::int32_t fetch(void* user, std::int64_t frame, const VireoFrame* target, VireoTime* time) {
            const auto& moved = static_cast<Frames*>(user)->seconds;
            for (int y = 0; y < target->height; ++y) {
                std::fill_n(static_cast<std::uint8_t*>(target->pixels) + y * target->stride,
                            4 * target->width, 100);
            }
            if (const auto at = moved.find(frame); at != moved.end()) time->seconds = at->second;
            return 0;
        }
    } still, moved;
    for (std::int64_t frame = 17; frame < 25; ++frame) moved.seconds[frame] = 0.5;
    const auto rendered = [&](Frames& frames) {
        Pixels source(width, height, {}, 1), result(width, height, {}, 2);
        const VireoRenderOptions options{sizeof options, Frames::fetch, nullptr, &frames};
        const VireoTime time = moment(25);
        EXPECT_EQ(vireoChainRender(chain.get(), &source.frame, &result.frame, &time, &options), VireoDone);
        return rowsOf(result.frame);
    };
    EXPECT_NE(rendered(still), rendered(moved));
}

// A chain keeps nothing of one clip for the next: its looking back ends at the frames that it is given.
TEST(InterfaceTime, ShowsNoFramesOfAnotherClip) {
    const std::string text = "Color Balance:red=200; Ghosting; Solarize:threshold=250; Ghosting";
    const ChainHandle chain = newChain(text), untouched = newChain(text);
    CallersClip a(12, {}, 0, 1), b(12, {}, 0, 1000);
    for (std::int64_t frame = 0; frame < 12; ++frame) {
        const VireoTime time = a.time(frame);
        const VireoRenderOptions options = a.options();
        Pixels result(width, height, {}, 1);
        ASSERT_EQ(vireoChainRender(chain.get(), &a[frame].frame, &result.frame, &time, &options), VireoDone);
    }
    const StreamHandle first = newStream(chain), second = newStream(chain), alone = newStream(untouched);
    for (std::int64_t frame = 0; frame < 12; ++frame) {
        const VireoTime time = b.time(frame);
        const VireoRenderOptions options = b.options();
        Pixels results[] = {
            {width, height, {}, 1}, {width, height, {}, 2}, {width, height, {}, 3}, {width, height, {}, 4}};
        ASSERT_EQ(vireoChainRender(chain.get(), &b[frame].frame, &results[0].frame, &time, &options),
                  VireoDone);
        ASSERT_EQ(vireoChainRender(untouched.get(), &b[frame].frame, &results[1].frame, &time, &options),
                  VireoDone);
        // Streams of one chain side by side, each with a clip of its own.
        ASSERT_EQ(vireoStreamRender(first.get(), &a[frame].frame, &results[2].frame, nullptr), VireoDone);
        ASSERT_EQ(vireoStreamRender(second.get(), &b[frame].frame, &results[2].frame, nullptr), VireoDone);
        ASSERT_EQ(vireoStreamRender(alone.get(), &b[frame].frame, &results[3].frame, nullptr), VireoDone);
        for (const Pixels& result : results)
            EXPECT_EQ(rowsOf(result.frame), rowsOf(results[0].frame)) << frame;
    }
}

TEST(InterfaceTime, EndsACallThatCannotHaveAFrame) {
    const ChainHandle chain = newChain("Solarize; Ghosting");
    Pixels source(width, height, {}, 1), result(width, height, {}, 2);
    const VireoTime time = moment(9);
    VireoRenderOptions options{
        sizeof options,
        [](void*, std::int64_t frame, const VireoFrame*, VireoTime*) { return frame == 7 ? 1 : 0; }, nullptr,
        nullptr};
    EXPECT_EQ(vireoChainRender(chain.get(), &source.frame, &result.frame, &time, &options), VireoNoFrame);
    EXPECT_EQ(sentence(), "frame 7 is not there");
    options.earlierFrame = [](void*, std::int64_t, const VireoFrame*, VireoTime* changed) {
        changed->seconds = std::nan("");
        return 0;
    };
    EXPECT_EQ(vireoChainRender(chain.get(), &source.frame, &result.frame, &time, &options), VireoUsage);
    // Without a callback the source stands for the frames before.
    ASSERT_EQ(vireoChainRender(chain.get(), &source.frame, &result.frame, &time, nullptr), VireoDone);
    CallersClip same(1, {});
    EXPECT_TRUE(result.holds(*same.expected(engineChain("Solarize; Ghosting"), 0)));
}

TEST(InterfaceTime, IsCancelledForGood) {
    const ChainHandle chain = newChain("Solarize; Levels; Replicate");
    for (const std::uint32_t threads : {1U, 3U}) {
        ASSERT_EQ(vireoChainSetThreads(chain.get(), threads), VireoDone);
        Pixels source(40, 400, {}, 1), result(40, 400, {}, 2);
        struct Asked {
            std::atomic<int> calls = 0;
            int yes = 0;
        };
        const auto render = [&](Asked& asked) {
            const VireoRenderOptions options{sizeof options, nullptr,
                                             [](void* user) {
                                                 auto& state = *static_cast<Asked*>(user);
                                                 return ++state.calls == state.yes ? 1 : 0;
                                             },
                                             &asked};
            return vireoChainRender(chain.get(), &source.frame, &result.frame, nullptr, &options);
        };
        Asked never;
        EXPECT_EQ(render(never), VireoDone);
        EXPECT_GE(never.calls, 3);
        // Whoever says so once and takes it back gets no frame with a part missing.
        for (int yes = 1; yes <= never.calls; ++yes) {
            Asked once;
            once.yes = yes;
            EXPECT_EQ(render(once), VireoCancelled) << yes << " of " << never.calls;
        }
        EXPECT_EQ(sentence(), "rendering was cancelled");
    }
}

TEST(InterfaceTime, TellsWhatLeavesAPictureAlone) {
    struct Case {
        const char* text;
        std::int64_t frame;
        bool isIdentity;
    };
    for (const Case& c :
         {Case{"", 0, true}, Case{"Solarize", 0, false}, Case{"Solarize:from=2f", 1, true},
          Case{"Solarize:from=2f", 2, false}, Case{"Solarize:mix=0@0f..100@10f", 0, true},
          Case{"Color Balance:red=255,green=255,blue=255; Camera Blur:percent blur=0", 0, true},
          Case{"Color Balance; Solarize:to=1s", 25, true}}) {
        std::int32_t isIdentity = -1;
        const VireoTime time = moment(c.frame);
        EXPECT_EQ(vireoChainIsIdentity(newChain(c.text).get(), &time, &isIdentity), VireoDone);
        EXPECT_EQ(isIdentity == 1, c.isIdentity) << c.text;
    }
}

class InterfaceStreams : public testing::TestWithParam<const char*> {
protected:
    InterfaceStreams()
        : text(GetParam()), expected(engineChain(text)), chain(newChain(text)), stream(newStream(chain)) {}

    void renderAs(CallersClip& clip, std::int64_t frame, std::int64_t first,
                  const VireoTime* time = nullptr) {
        Pixels result(width, height, {.layout = VireoRgba, .gap = 3}, 9);
        ASSERT_EQ(vireoStreamRender(stream.get(), &clip[frame].frame, &result.frame, time), VireoDone)
            << sentence();
        EXPECT_TRUE(result.holds(*clip.expected(expected, frame, first))) << text << ", frame " << frame;
    }

    const std::string text;
    const FilterChain expected;
    const ChainHandle chain;
    const StreamHandle stream;
};

TEST_P(InterfaceStreams, KeepTheFramesThatTheChainNeeds) {
    for (const int interlacing : {0, 1, 2}) {
        CallersClip clip(24, {}, interlacing);
        for (std::int64_t frame = 0; frame < clip.size(); ++frame) {
            const VireoTime time = clip.time(frame);
            if (frame == 8) {  // fails and hurts nothing
                Pixels other(width, height + 1, {}, 1);
                EXPECT_EQ(vireoStreamRender(stream.get(), &clip[frame].frame, &other.frame, &time),
                          VireoUsage);
            }
            if (frame == 15) {
                ASSERT_EQ(vireoChainAddText(chain.get(), "Horizontal Flip"), VireoDone);
                ASSERT_EQ(vireoChainRemove(chain.get(), vireoChainLength(chain.get()) - 1), VireoDone);
            }
            renderAs(clip, frame, 0, &time);
        }
    }
}

TEST_P(InterfaceStreams, BeginAnewAtAGapARestartAndAnotherSize) {
    CallersClip clip(24, {});
    const auto run = [&](std::int64_t first, int frames) {
        for (std::int64_t frame = first; frame < first + frames; ++frame) {
            const VireoTime time = clip.time(frame);
            renderAs(clip, frame, first, &time);
        }
    };
    run(0, 4);
    run(12, 3);
    run(5, 2);
    ASSERT_EQ(vireoStreamRestart(stream.get()), VireoDone);
    run(7, 2);
    Pixels small(8, 8, {}, 1), result(8, 8, {}, 1);
    const VireoTime time = clip.time(9);
    ASSERT_EQ(vireoStreamRender(stream.get(), &small.frame, &result.frame, &time), VireoDone);
    run(10, 2);
}

INSTANTIATE_TEST_SUITE_P(Chains, InterfaceStreams, testing::ValuesIn(timedChains));

TEST(InterfaceStreams, CountTheirFrames) {
    const ChainHandle chain = newChain("Solarize:threshold=0@0f..250@9f");
    const StreamHandle stream = newStream(chain);
    CallersClip clip(12, {});
    const auto render = [&](std::int64_t shown, const VireoTime* time) {
        Pixels result(width, height, {}, 2), expected(width, height, {}, 3);
        const VireoTime counted = moment(shown);
        EXPECT_EQ(vireoStreamRender(stream.get(), &clip[0].frame, &result.frame, time), VireoDone);
        EXPECT_EQ(vireoChainRender(chain.get(), &clip[0].frame, &expected.frame, &counted, nullptr),
                  VireoDone);
        EXPECT_EQ(rowsOf(result.frame), rowsOf(expected.frame)) << shown;
    };
    render(0, nullptr);
    render(1, nullptr);
    const VireoTime time = moment(7);
    render(7, &time);
    render(8, nullptr);
    ASSERT_EQ(vireoStreamRestart(stream.get()), VireoDone);
    render(0, nullptr);
}

}  // namespace
}  // namespace vireo::test
