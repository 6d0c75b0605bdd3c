// SPDX-License-Identifier: MIT
#include "engine/chain/filter_chain.h"
#include "engine/chain/vuya.h"
#include "engine/error.h"
#include "tests/engine/support/fake_filters.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cstring>

namespace vireo {
namespace {

using test::Clip;
using test::plainPicture;

FilterChain chainOf(const std::vector<std::string>& texts,
                    std::optional<std::uint32_t> format = std::nullopt) {
    const Catalogue catalogue(test::fakeFilters());
    std::vector<FilterSettings> filters;
    for (const std::string& text : texts) filters.push_back(parseFilterText(catalogue, text));
    return FilterChain(std::move(filters), format);
}

/// Frames whose blue is their number.
Clip numberedClip(int frames, Interlacing interlacing = Interlacing::Progressive) {
    std::vector<PicturePtr> pictures;
    for (int i = 0; i < frames; ++i) pictures.push_back(plainPicture(5, 4, static_cast<std::uint8_t>(i)));
    return Clip(std::move(pictures), interlacing);
}

PicturePtr render(const FilterChain& chain, const Clip& clip, std::int64_t frame, ChainMemory& memory,
                  const StageWork& work = {}) {
    return chain.render({clip.frame(frame), clip.position(frame), clip, memory, work});
}

PicturePtr render(const FilterChain& chain, const Clip& clip, std::int64_t frame) {
    return render(chain, clip, frame, *chain.newMemory(4));
}

int blueOf(FilterChain& chain, const Clip& clip, std::int64_t frame) {
    return render(chain, clip, frame)->row(0)[0];
}

bool isRefused(const std::vector<std::string>& texts, const char (&format)[5]) {
    try {
        chainOf(texts, PixKit::formatCode(format));
        return false;
    } catch (const Error& error) {
        return error.status() == 2;
    }
}

TEST(FilterChain, RunsFiltersInOrderWithTheirSettings) {
    const Clip clip = numberedClip(3);
    auto chain = chainOf({"add value:amount=20", "add value", "add value:amount=-3"});
    EXPECT_EQ(blueOf(chain, clip, 2), 2 + 20 + 5 - 3);
}

TEST(FilterChain, AnimatesCoversAndMixesByThePositionInTheClip) {
    const Clip clip = numberedClip(60);
    auto chain = chainOf({"addv:amount=0@10f..100@20f,from=0.2s,to=30f"});
    EXPECT_EQ(blueOf(chain, clip, 4), 4);  // before 0.2 s
    EXPECT_EQ(blueOf(chain, clip, 5), 5);
    EXPECT_EQ(blueOf(chain, clip, 13), 13 + 30);
    EXPECT_EQ(blueOf(chain, clip, 29), 29 + 100);
    EXPECT_EQ(blueOf(chain, clip, 30), 30);  // `to` is excluded

    auto mixed = chainOf({"addv:amount=40,mix=0@0f..100@20f"});
    EXPECT_EQ(blueOf(mixed, clip, 0), 0);
    EXPECT_EQ(blueOf(mixed, clip, 5), 5 + 10);
    EXPECT_EQ(blueOf(mixed, clip, 50), 50 + 40);
}

TEST(FilterChain, TellsTheClockInFields) {
    const Clip progressive = numberedClip(9);
    auto chain = chainOf({"add stamp"});
    const PicturePtr frame = render(chain, progressive, 7);
    EXPECT_EQ(frame->row(0)[0], 14);
    EXPECT_EQ(frame->row(0)[1], 0);
    EXPECT_EQ(frame->row(0)[2], 18);

    struct Case {
        Interlacing interlacing;
        int upperTime, lowerTime;
    };
    for (const Case& c :
         {Case{Interlacing::TopFieldFirst, 14, 15}, Case{Interlacing::BottomFieldFirst, 15, 14}}) {
        const PicturePtr woven = render(chain, numberedClip(9, c.interlacing), 7);
        for (int y = 0; y < woven->height(); ++y) {
            EXPECT_EQ(woven->row(y)[0], y % 2 == 0 ? c.upperTime : c.lowerTime) << y;
            EXPECT_EQ(woven->row(y)[1], y % 2 == 0 ? 1 : 2) << y;
        }
    }
}

TEST(FilterChain, FindsHowFarFiltersLookBack) {
    EXPECT_EQ(chainOf({"deep"}).lookBack(), 0);
    EXPECT_EQ(chainOf({"echo"}).lookBack(), 8);
    EXPECT_EQ(chainOf({"echo", "deep", "echo"}).lookBack(), 16);
}

TEST(FilterChain, GivesEarlierFramesAsTheFiltersBeforeMakeThem) {
    const Clip clip = numberedClip(12);
    auto alone = chainOf({"echo"});
    EXPECT_EQ(blueOf(alone, clip, 9), 10 * 9 - 7);
    EXPECT_EQ(blueOf(alone, clip, 1), 10 * 1 - 0);  // before the begin

    // What is added before the echo depends on the frame that is asked for.
    auto behind = chainOf({"addv:amount=0@0f..100@100f", "echo"});
    EXPECT_EQ(blueOf(behind, clip, 6), 10 * (6 + 6) - (4 + 4));

    auto twice = chainOf({"echo", "echo"});
    const auto echoOf = [](int n) { return 10 * n - std::max(n - 2, 0); };
    EXPECT_EQ(blueOf(twice, clip, 5), (10 * echoOf(5) - echoOf(3)) & 0xFF);
}

TEST(FilterChain, GivesEarlierFieldsOfTheSameParity) {
    // Upper rows hold the frame's number, lower ones 100 more.
    std::vector<PicturePtr> frames;
    for (int i = 0; i < 12; ++i) {
        const PicturePtr upper = plainPicture(5, 3, static_cast<std::uint8_t>(i));
        const PicturePtr lower = plainPicture(5, 2, static_cast<std::uint8_t>(100 + i));
        frames.push_back(weaveFields(*upper, *lower));
    }
    const Clip clip(std::move(frames), Interlacing::TopFieldFirst);
    auto chain = chainOf({"addv:amount=1", "echo"});
    const PicturePtr result = render(chain, clip, 10);
    ASSERT_EQ(result->height(), 5);
    for (int y = 0; y < 5; ++y) {
        const int base = y % 2 == 0 ? 1 : 101;
        EXPECT_EQ(result->row(y)[0], (10 * (base + 10) - (base + 6)) & 0xFF) << y;
    }
    // The lower field of frame 3 asks for time 7 - 8, which is the clip's begin.
    EXPECT_EQ(render(chain, clip, 3)->row(1)[0], (10 * (101 + 3) - 101) & 0xFF);
}

TEST(FilterChain, LetsFailuresOfBandsThroughAndEndsWhenCancelled) {
    static std::atomic<int> callsUntilFailure;
    hosting::Filter failing = test::fakeFilters()[1];
    failing.properties.matchName = "QULN Antialias";  // one that is rendered in bands
    failing.entry = [](void*, std::int16_t selector, FilterInvocation**) -> std::int32_t {
        return selector == FilterSelectorExecute && --callsUntilFailure == 0 ? 7 : 0;
    };
    const std::vector<hosting::Filter> filters = {failing};
    const Catalogue catalogue(filters);
    const FilterChain chain({parseFilterText(catalogue, "add stamp")});
    const Clip clip({plainPicture(9, 900, 1)});
    const auto memory = chain.newMemory(1);
    WorkerPool workers(3);
    for (const int call : {1, 7, 20}) {
        callsUntilFailure = call;
        EXPECT_THROW(render(chain, clip, 0, *memory, {&workers, {}}), std::runtime_error) << call;
    }
    callsUntilFailure = 0;
    EXPECT_NO_THROW(render(chain, clip, 0, *memory, {&workers, {}}));
    for (const int asked : {0, 1, 5, 12}) {
        std::atomic<int> left = asked;
        const StageWork work{&workers, [&left] { return left-- <= 0; }};
        EXPECT_THROW(render(chain, clip, 0, *memory, work), Error) << asked;
    }
}

TEST(FilterChain, NegotiatesThePixelFormat) {
    const auto bgra16 = PixKit::formatCode("Bgra");
    EXPECT_EQ(chainOf({"deep"}).sourceFormat(8), PixKit::formatBgra);
    EXPECT_EQ(chainOf({"deep"}).sourceFormat(10), bgra16);
    EXPECT_EQ(chainOf({"deep"}).sourceFormat(32), bgra16);
    EXPECT_EQ(chainOf({"deep"}, PixKit::formatBgra).sourceFormat(16), PixKit::formatBgra);
    EXPECT_EQ(chainOf({"deep"}, bgra16).sourceFormat(8), bgra16);
    EXPECT_EQ(chainOf({"deep", "addv"}).sourceFormat(16), PixKit::formatBgra);
    EXPECT_EQ(chainOf({"addv"}).sourceFormat(16), PixKit::formatBgra);

    EXPECT_TRUE(isRefused({"addv"}, "vuya"));
    EXPECT_TRUE(isRefused({"deep"}, "BGra"));
    EXPECT_TRUE(isRefused({"deep", "addv"}, "Bgra"));
    EXPECT_TRUE(isRefused({"deep"}, "argb"));
    EXPECT_FALSE(isRefused({"deep", "addv"}, "vuya"));
    EXPECT_FALSE(isRefused({"addv"}, "bgra"));
}

TEST(Vuya, FollowsStudioRangeBothWays) {
    struct Case {
        std::uint8_t bgra[4], vuya[4];
    };
    const Case cases[] = {
        {{0, 0, 0, 9}, {128, 128, 16, 9}},       {{255, 255, 255, 255}, {128, 128, 235, 255}},
        {{0, 0, 255, 255}, {240, 90, 81, 255}},  {{0, 255, 0, 255}, {34, 54, 145, 255}},
        {{255, 0, 0, 255}, {110, 240, 41, 255}}, {{128, 128, 128, 0}, {128, 128, 126, 0}},
    };
    for (const Case& c : cases) {
        Picture picture(1, 1);
        std::memcpy(picture.row(0), c.bgra, 4);
        const auto vuya = vuyaFromBgra(picture);
        EXPECT_EQ(vuya->format(), PixKit::formatVuya);
        EXPECT_THAT(std::vector<int>(vuya->row(0), vuya->row(0) + 4), testing::ElementsAreArray(c.vuya));
        const auto back = bgraFromVuya(*vuya);
        for (int i = 0; i < 4; ++i) EXPECT_NEAR(back->row(0)[i], c.bgra[i], 2);
    }
    // Every grey survives, and what lies outside the colour cube is cut.
    for (int grey = 0; grey < 256; ++grey) {
        const auto back = bgraFromVuya(
            *vuyaFromBgra(*plainPicture(1, 1, static_cast<std::uint8_t>(grey),
                                        static_cast<std::uint8_t>(grey), static_cast<std::uint8_t>(grey))));
        EXPECT_NEAR(back->row(0)[1], grey, 1);
    }
    Picture extreme(1, 1, PixKit::formatVuya);
    const std::uint8_t outside[] = {255, 0, 255, 1};
    std::memcpy(extreme.row(0), outside, 4);
    EXPECT_EQ(bgraFromVuya(extreme)->row(0)[2], 255);
}

TEST(Fields, SplitAndWeave) {
    for (const int height : {2, 3, 7, 8}) {
        Picture frame(3, height);
        for (int y = 0; y < height; ++y) std::memset(frame.row(y), y, 12);
        const PicturePtr upper = extractField(frame, Field::Upper), lower = extractField(frame, Field::Lower);
        EXPECT_EQ(upper->height(), (height + 1) / 2);
        EXPECT_EQ(lower->height(), height / 2);
        EXPECT_EQ(lower->row(0)[0], 1);
        const PicturePtr woven = weaveFields(*upper, *lower);
        ASSERT_EQ(woven->height(), height);
        for (int y = 0; y < height; ++y) EXPECT_EQ(woven->row(y)[11], y);
    }
}

}  // namespace
}  // namespace vireo
