// SPDX-License-Identifier: MIT
// What the caller's frames become: the pixels are those of the engine's chain, whatever the frames' shape.
#include "tests/engine/interface/interface_support.h"
#include "tests/engine/support/fake_filters.h"

#include <limits>

namespace vireo::test {
namespace {

constexpr int width = 13, height = 10;

/// How the result lies, seen from the source.
enum class Result { OwnBuffer, OtherRowOrder, OtherLayout, InPlace, InPlaceOtherRowOrder, Engines };

class InterfacePixels : public testing::TestWithParam<const char*> {
protected:
    void check(const Lie& lie, Result kind, const VireoTime& time) {
        Lie other = lie;
        if (kind == Result::OtherRowOrder) other.isBottomUp = !lie.isBottomUp;
        if (kind == Result::OtherLayout) other.layout = lie.layout == VireoArgb ? VireoBgr : VireoArgb;
        Pixels source(width, height, lie, 1), own(width, height, other, 2);
        const VireoFrame given = source.frame;
        const auto before = rowsOf(given);
        const PicturePtr picture = source.picture();
        const FramePosition position{time.frame, time.frames, static_cast<double>(time.frame) / time.rate,
                                     time.rate, static_cast<Interlacing>(time.interlacing)};
        const PicturePtr expected =
            engines.render({picture, position, Clip({picture}), *engines.newMemory(1)});

        const bool isInPlace = kind == Result::InPlace || kind == Result::InPlaceOtherRowOrder;
        if (kind == Result::InPlaceOtherRowOrder) {
            source.frame.pixels = static_cast<std::uint8_t*>(given.pixels) + (height - 1) * given.stride;
            source.frame.stride = -given.stride;
        }
        if (kind == Result::Engines) own.frame.pixels = nullptr;
        Pixels& result = isInPlace ? source : own;
        ASSERT_EQ(vireoChainRender(chain.get(), &given, &result.frame, &time, nullptr), VireoDone)
            << sentence();
        EXPECT_TRUE(result.holds(*expected));
        EXPECT_TRUE(source.guardsHold());
        EXPECT_TRUE(isInPlace || rowsOf(given) == before) << "the source was written";
        const bool isOurs = kind != Result::Engines;
        EXPECT_TRUE(!isOurs || own.guardsHold());
        EXPECT_EQ(own.frame.owned == nullptr, isOurs);
        vireoFrameRelease(&own.frame);
        EXPECT_EQ(own.frame.pixels != nullptr, isOurs);
        EXPECT_EQ(own.frame.owned, nullptr);
    }

    const ChainHandle chain = newChain(GetParam());
    const FilterChain engines = engineChain(GetParam());
};

TEST_P(InterfacePixels, AreTheChainsInEveryLayoutDepthAndRowOrder) {
    VireoNeeds needs{.structSize = sizeof needs};
    ASSERT_EQ(vireoChainNeeds(chain.get(), &needs), VireoDone);
    for (const VireoDepth depth : {VireoDepth8, VireoDepth16, VireoDepthFloat}) {
        for (int i = 0; (needs.depths & depth) != 0 && i < 11 * 3 * 4 && !HasFailure(); ++i) {
            const int gaps[] = {0, 64, 7};
            const Lie lie{static_cast<VireoLayout>(i / 12), depth, i % 2 == 1, i % 4 > 1, gaps[i / 4 % 3]};
            for (int result = 0; result <= static_cast<int>(Result::Engines); ++result) {
                const VireoTime time = moment(3, 20, (i / 12 + lie.gap) % 3);
                SCOPED_TRACE(testing::PrintToString(lie) + ", result " + std::to_string(result) +
                             ", interlacing " + std::to_string(time.interlacing));
                check(lie, static_cast<Result>(result), time);
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Chains, InterfacePixels,
                         testing::Values("", "Solarize:threshold=60%,mix=70", "Horizontal Flip",
                                         "Horizontal Flip:from=9f",
                                         "Camera Blur:percent blur=30; Vertical Flip"));

TEST(InterfaceFrames, OfOneRowNeedNoStride) {
    const ChainHandle chain = newChain("Solarize:threshold=200; Horizontal Flip; Alpha Glow");
    Pixels usual(40, 1, {}, 1);
    for (const std::int64_t stride : std::initializer_list<std::int64_t>{0, 3, INT64_MAX, INT64_MIN, -1}) {
        Pixels result(40, 1, {}, 2);
        VireoFrame source = usual.frame;
        source.stride = result.frame.stride = stride;
        ASSERT_EQ(vireoChainRender(chain.get(), &source, &result.frame, nullptr, nullptr), VireoDone)
            << sentence();
        EXPECT_EQ(rowsOf(result.frame), rendered(chain, usual.frame)) << stride;
    }
}

// An empty chain moves the samples of a pixel.
TEST(InterfaceFrames, MeanWhatTheirLayoutSays) {
    using Bytes = std::vector<std::uint8_t>;
    const std::pair<VireoLayout, Bytes> pixels[] = {
        {VireoBgra, {10, 20, 30, 255}}, {VireoRgba, {30, 20, 10, 255}}, {VireoArgb, {255, 30, 20, 10}},
        {VireoAbgr, {255, 10, 20, 30}}, {VireoBgrx, {10, 20, 30, 255}}, {VireoRgbx, {30, 20, 10, 255}},
        {VireoXrgb, {255, 30, 20, 10}}, {VireoXbgr, {255, 10, 20, 30}}, {VireoBgr, {10, 20, 30}},
        {VireoRgb, {30, 20, 10}}};
    for (auto [from, given] : pixels) {
        for (const auto& [to, due] : pixels) {
            Bytes made(due.size());
            VireoFrame source{sizeof source, 1, 1, from, VireoDepth8, 0, given.data(), 0, nullptr};
            VireoFrame result{sizeof result, 1, 1, to, VireoDepth{}, 0, made.data(), 0, nullptr};
            EXPECT_EQ(vireoChainRender(newChain().get(), &source, &result, nullptr, nullptr), VireoDone);
            EXPECT_EQ(made, due) << from << " to " << to;
        }
    }
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

TEST(InterfaceFrames, ThatAreTooDeepCanBeReduced) {
    constexpr int side = 16;
    const ChainHandle chain = newChain("Color Balance (RGB):red=300");
    const VireoRenderOptions options{.structSize = sizeof options, .reducesDepth = 1};
    const auto render = [&](VireoDepth depth, auto* samples) {
        VireoFrame frame{.structSize = sizeof frame,
                         .width = side,
                         .height = side,
                         .layout = VireoRgba,
                         .depth = depth,
                         .premultiplied = 0,
                         .pixels = samples,
                         .stride = static_cast<std::int64_t>(side * 4 * sizeof *samples),
                         .owned = nullptr};
        EXPECT_EQ(vireoChainRender(chain.get(), &frame, &frame, nullptr, nullptr),
                  depth == VireoDepth8 ? VireoDone : VireoUnsupported);
        return vireoChainRender(chain.get(), &frame, &frame, nullptr, &options);
    };
    std::vector<std::uint8_t> bytes(side * side * 4, 100);
    std::vector<std::uint16_t> words(bytes.size(), 100 * 257);
    std::vector<float> floats(bytes.size(), 100 / 255.0F);
    ASSERT_EQ(render(VireoDepth16, words.data()), VireoDone);
    ASSERT_EQ(render(VireoDepthFloat, floats.data()), VireoDone);
    const int red = 100 * 300 / 255;
    EXPECT_EQ(words[0], red * 257);
    EXPECT_FLOAT_EQ(floats[0], red / 255.0F);
    EXPECT_EQ(words[1], 100 * 257);

    // What lies between two levels is both, in its proportion, and what is no colour does no harm.
    words.assign(words.size(), 100 * 257 + 64);
    ASSERT_EQ(render(VireoDepth16, words.data()), VireoDone);
    double mean = 0;
    for (std::size_t i = 1; i < words.size(); i += 4) mean += words[i] / (257.0 * side * side);
    EXPECT_NEAR(mean, 100 + 64 / 257.0, 0.01);
    floats.assign(floats.size(), -7);
    floats[1] = 9;
    floats[5] = std::numeric_limits<float>::quiet_NaN();
    ASSERT_EQ(render(VireoDepthFloat, floats.data()), VireoDone);
    EXPECT_EQ(floats[1], 1);
    EXPECT_EQ(floats[5], 0);
    EXPECT_EQ(floats[2], 0);
}

TEST(InterfaceFrames, OfBgraAreRenderedWhereTheyLie) {
    const ChainHandle chain = newChain("Color Balance:red=10");
    for (const Lie& lie : {Lie{}, Lie{.isBottomUp = true}, Lie{.gap = 32}, Lie{.layout = VireoRgba}}) {
        Pixels source(16, 8, lie, 1), result(16, 8, lie, 2);
        Peek peek{&source, &result};
        const VireoRenderOptions options{sizeof options, nullptr, Peek::ask, &peek};
        ASSERT_EQ(vireoChainRender(chain.get(), &source.frame, &result.frame, nullptr, &options), VireoDone);
        const bool isPlain = lie.layout == VireoBgra;
        EXPECT_EQ(peek.isWrittenInside, isPlain) << lie;
        EXPECT_EQ(rowsOf(result.frame) == rendered(chain, source.frame), isPlain) << lie;
    }
}

}  // namespace
}  // namespace vireo::test
