// SPDX-License-Identifier: MIT
// What the caller's frames become: the pixels are those of the engine's chain, whatever the frames' shape.
#include "tests/engine/interface/interface_support.h"

#include <cstring>

namespace vireo::test {
namespace {

constexpr int width = 13, height = 10;

/// How the result lies, seen from the source.
enum class Result { OwnBuffer, OtherRowOrder, OtherLayout, InPlace, InPlaceOtherRowOrder, Engines };
constexpr Result results[] = {Result::OwnBuffer, Result::OtherRowOrder,        Result::OtherLayout,
                              Result::InPlace,   Result::InPlaceOtherRowOrder, Result::Engines};

class Renderer {
public:
    explicit Renderer(const std::string& text)
        : text_(text), chain_(newChain(text)), expected_(engineChain(text)) {}

    void check(const Lie& lie, Result kind, const VireoTime& time) {
        std::ostringstream trace;
        trace << text_ << ", " << lie << ", result " << static_cast<int>(kind) << ", interlacing "
              << time.interlacing;
        SCOPED_TRACE(trace.str());
        Pixels source(width, height, lie, 1);
        const auto before = rowsOf(source.frame);
        const PicturePtr picture = source.picture();
        const FramePosition position = positionOf(time);
        struct None : SourceHistory {
            const PicturePtr& picture;
            const FramePosition& now;
            None(const PicturePtr& source, const FramePosition& at) : picture(source), now(at) {}
            PicturePtr frame(std::int64_t) const override { return picture; }
            FramePosition position(std::int64_t) const override { return now; }
        } const history{picture, position};
        const PicturePtr expected = expected_.render({picture, position, history, *expected_.newMemory(1)});

        Lie other = lie;
        if (kind == Result::OtherRowOrder) other.isBottomUp = !lie.isBottomUp;
        if (kind == Result::OtherLayout) other.layout = lie.layout == VireoArgb ? VireoBgr : VireoArgb;
        Pixels own(width, height, other, 2);
        VireoFrame* result = &own.frame;
        VireoFrame turned = source.frame;
        if (kind == Result::InPlace) result = &source.frame;
        if (kind == Result::InPlaceOtherRowOrder) {
            turned.pixels = static_cast<std::uint8_t*>(turned.pixels) + (height - 1) * turned.stride;
            turned.stride = -turned.stride;
            result = &turned;
        }
        if (kind == Result::Engines) own.frame.pixels = nullptr;
        ASSERT_EQ(vireoChainRender(chain_.get(), &source.frame, result, &time, nullptr), VireoDone)
            << sentence();

        EXPECT_TRUE(source.guardsHold());
        switch (kind) {
            case Result::InPlace: EXPECT_TRUE(source.holds(*expected)); return;
            case Result::InPlaceOtherRowOrder: {
                Picture turnedPicture(width, height, expected->format());
                const auto bytes = static_cast<std::size_t>(expected->rowBytes());
                for (int y = 0; y < height; ++y)
                    std::memcpy(turnedPicture.row(y), expected->row(height - 1 - y), bytes);
                EXPECT_TRUE(source.holds(turnedPicture));
                return;
            }
            default: break;
        }
        EXPECT_EQ(rowsOf(source.frame), before) << "the source was written";
        EXPECT_TRUE(own.holds(*expected));
        if (kind != Result::Engines) {
            EXPECT_TRUE(own.guardsHold());
            EXPECT_EQ(own.frame.owned, nullptr);
            return;
        }
        EXPECT_NE(own.frame.owned, nullptr);
        vireoFrameRelease(&own.frame);
        EXPECT_EQ(own.frame.pixels, nullptr);
        EXPECT_EQ(own.frame.owned, nullptr);
    }

private:
    std::string text_;
    ChainHandle chain_;
    FilterChain expected_;
};

TEST(InterfacePixels, AreTheChainsInEveryLayoutDepthAndRowOrder) {
    struct Case {
        const char* text;
        std::vector<VireoDepth> depths;
    };
    const Case cases[] = {
        {"Solarize:threshold=60%,mix=70", {VireoDepth8}},
        {"Camera Blur:percent blur=30; Vertical Flip", {VireoDepth8}},
        {"Horizontal Flip", {VireoDepth8, VireoDepth16, VireoDepthFloat}},
        {"Horizontal Flip:from=9f", {VireoDepth8, VireoDepth16, VireoDepthFloat}},
        {"", {VireoDepth8, VireoDepth16, VireoDepthFloat}},
    };
    for (const Case& c : cases) {
        Renderer renderer(c.text);
        for (const VireoDepth depth : c.depths) {
            for (int layout = VireoBgra; layout <= VireoGrey; ++layout) {
                for (int bits = 0; bits < 4; ++bits) {
                    for (const int gap : {0, 64, 7}) {
                        const Lie lie{static_cast<VireoLayout>(layout), depth, (bits & 1) != 0,
                                      (bits & 2) != 0, gap};
                        for (const Result result : results) {
                            renderer.check(lie, result, moment(3, 20, (layout + gap) % 3));
                            if (HasFatalFailure() || HasNonfatalFailure()) return;
                        }
                    }
                }
            }
        }
    }
}

// Filters that step through rows with their gaps must not write into what lies between a caller's rows.
TEST(InterfacePixels, LeaveAloneWhatLiesBetweenRows) {
    for (std::uint32_t filter = 0; filter < vireoFilterCount(engine()); ++filter) {
        const ChainHandle chain = newChain();
        ASSERT_EQ(vireoChainAddFilter(chain.get(), filter), VireoDone);
        for (std::uint32_t seed = 0; seed < 4; ++seed) {
            if (seed > 0) setAllAtRandom(chain, 0, seed);
            for (const bool isBottomUp : {false, true}) {
                Pixels source(33, 21, {.isBottomUp = isBottomUp, .gap = 60}, seed);
                Pixels result(33, 21, {.isBottomUp = isBottomUp, .gap = 60}, seed + 1);
                Pixels packed(33, 21, {}, seed + 2);
                ASSERT_EQ(vireoChainRender(chain.get(), &source.frame, &result.frame, nullptr, nullptr),
                          VireoDone);
                ASSERT_EQ(vireoChainRender(chain.get(), &source.frame, &packed.frame, nullptr, nullptr),
                          VireoDone);
                EXPECT_TRUE(result.guardsHold()) << textOf(chain);
                EXPECT_EQ(rowsOf(result.frame), rowsOf(packed.frame)) << textOf(chain);
            }
        }
    }
}

TEST(InterfacePixels, OfOneRowNeedNoStride) {
    const ChainHandle chain = newChain("Solarize:threshold=200; Horizontal Flip; Alpha Glow");
    Pixels usual(40, 1, {}, 1), expected(40, 1, {}, 2);
    ASSERT_EQ(vireoChainRender(chain.get(), &usual.frame, &expected.frame, nullptr, nullptr), VireoDone);
    for (const std::int64_t stride :
         {std::int64_t{0}, std::int64_t{3}, INT64_MAX, INT64_MIN, std::int64_t{-1}}) {
        Pixels result(40, 1, {}, 2);
        VireoFrame source = usual.frame;
        source.stride = stride;
        result.frame.stride = stride;
        ASSERT_EQ(vireoChainRender(chain.get(), &source, &result.frame, nullptr, nullptr), VireoDone)
            << sentence();
        result.frame.stride = expected.frame.stride;
        EXPECT_EQ(rowsOf(result.frame), rowsOf(expected.frame)) << stride;
    }
}

/// Renders one pixel through a chain that changes nothing that is opaque: it exchanges two columns twice.
std::vector<int> converted(VireoLayout from, bool isFromMultiplied, std::vector<std::uint8_t> pixel,
                           VireoLayout to, bool isToMultiplied) {
    const ChainHandle chain = newChain("Horizontal Flip");
    std::uint8_t made[4]{};
    VireoFrame source{sizeof source, 1, 1, from, VireoDepth8, isFromMultiplied, pixel.data(), 4, nullptr};
    VireoFrame result{sizeof result, 1, 1, to, VireoDepth{}, isToMultiplied, made, 4, nullptr};
    EXPECT_EQ(vireoChainRender(chain.get(), &source, &result, nullptr, nullptr), VireoDone) << sentence();
    const int samples = samplesOf(static_cast<PixelLayout>(to));
    return {made, made + samples};
}

TEST(InterfacePixels, MeanWhatTheirLayoutSays) {
    using testing::ElementsAre;
    const std::vector<std::uint8_t> pixel{10, 20, 30, 100};
    EXPECT_THAT(converted(VireoBgra, false, pixel, VireoArgb, false), ElementsAre(100, 30, 20, 10));
    EXPECT_THAT(converted(VireoBgrx, false, pixel, VireoRgba, false), ElementsAre(30, 20, 10, 255));
    EXPECT_THAT(converted(VireoBgra, false, pixel, VireoXrgb, false), ElementsAre(255, 30, 20, 10));
    EXPECT_THAT(converted(VireoBgra, false, pixel, VireoRgb, false), ElementsAre(30, 20, 10));
    EXPECT_THAT(converted(VireoGrey, false, {77}, VireoBgra, false), ElementsAre(77, 77, 77, 255));
    EXPECT_THAT(converted(VireoRgb, false, {255, 0, 0}, VireoGrey, false), ElementsAre(76));
    // 10 * 255 / 100 is 25.5, and 26 * 100 / 255 is 10.2.
    EXPECT_THAT(converted(VireoBgra, true, pixel, VireoBgra, false), ElementsAre(26, 51, 77, 100));
    EXPECT_THAT(converted(VireoBgra, false, {26, 51, 77, 100}, VireoBgra, true),
                ElementsAre(10, 20, 30, 100));
    EXPECT_THAT(converted(VireoBgra, true, {9, 9, 9, 0}, VireoBgra, false), ElementsAre(0, 0, 0, 0));
    EXPECT_THAT(converted(VireoBgrx, true, pixel, VireoBgra, true), ElementsAre(10, 20, 30, 255));
}

/// What a caller sees from inside a call.
struct Peek {
    Pixels* source;
    Pixels* result;
    std::vector<std::uint8_t> atFirst = rowsOf(result->frame);
    int calls = 0;
    bool isWrittenInside = false;

    static std::int32_t ask(void* user) {
        auto& peek = *static_cast<Peek*>(user);
        // Before the filter runs: were the source's pixels copied by now, it would not see this.
        if (peek.calls++ == 0) *static_cast<std::uint8_t*>(peek.source->frame.pixels) ^= 0xFF;
        peek.isWrittenInside |= rowsOf(peek.result->frame) != peek.atFirst;
        return 0;
    }
};

TEST(InterfacePixels, OfBgraAreRenderedWhereTheyLie) {
    const ChainHandle chain = newChain("Color Balance:red=10");
    for (const Lie& lie : {Lie{}, Lie{.isBottomUp = true}, Lie{.gap = 32}, Lie{.layout = VireoRgba}}) {
        Pixels source(16, 8, lie, 1), result(16, 8, lie, 2), expected(16, 8, lie, 3);
        Peek peek{&source, &result};
        const VireoRenderOptions options{sizeof options, nullptr, Peek::ask, &peek};
        ASSERT_EQ(vireoChainRender(chain.get(), &source.frame, &result.frame, nullptr, &options), VireoDone);
        ASSERT_EQ(vireoChainRender(chain.get(), &source.frame, &expected.frame, nullptr, nullptr), VireoDone);
        const bool isPlain = lie.layout == VireoBgra;
        EXPECT_EQ(peek.isWrittenInside, isPlain) << lie;
        EXPECT_EQ(rowsOf(result.frame) == rowsOf(expected.frame), isPlain) << lie;
    }
}

}  // namespace
}  // namespace vireo::test
