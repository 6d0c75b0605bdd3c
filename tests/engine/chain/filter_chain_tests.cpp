// SPDX-License-Identifier: MIT
#include "engine/chain/filter_chain.h"
#include "engine/chain/vuya.h"
#include "engine/error.h"
#include "tests/engine/support/fake_filters.h"
#include "tests/engine/support/gathering.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cstring>
#include <thread>

namespace vireo {
namespace {

using test::Clip;
using test::plainPicture;

FilterChain chainOf(const std::vector<std::string>& texts, std::optional<std::uint32_t> format = std::nullopt,
                    const std::vector<hosting::Filter>& known = test::fakeFilters()) {
    const Catalogue catalogue(known);
    std::vector<FilterSettings> filters;
    for (const std::string& text : texts) filters.push_back(parseFilterText(catalogue, text));
    return FilterChain(std::move(filters), format);
}

/// Frames whose blue is their number.
Clip numberedClip(int frames, Interlacing interlacing = Interlacing::Progressive) {
    std::vector<PicturePtr> pictures;
    for (int i = 0; i < frames; ++i) pictures.push_back(plainPicture(5, 4, i));
    return Clip(std::move(pictures), interlacing);
}

PicturePtr render(const FilterChain& chain, const Clip& clip, std::int64_t frame,
                  const StageWork& work = {}) {
    return chain.render({clip.frame(frame), clip.position(frame), clip, *chain.newMemory(4), work});
}

int blueOf(const FilterChain& chain, const Clip& clip, std::int64_t frame) {
    return render(chain, clip, frame)->row(0)[0];
}

TEST(FilterChain, RunsFiltersInOrderWithTheirSettingsOfTheMoment) {
    const Clip clip = numberedClip(60);
    EXPECT_EQ(blueOf(chainOf({"add value:amount=20", "add value", "add value:amount=-3"}), clip, 2), 24);

    const FilterChain animated = chainOf({"addv:amount=0@10f..100@20f,from=0.2s,to=30f"});
    const FilterChain mixed = chainOf({"addv:amount=40,mix=0@0f..100@20f"});
    // from 0.2 s on, and without `to`
    for (const auto& [frame, added] : {std::pair{4, 0}, {5, 0}, {13, 30}, {29, 100}, {30, 0}})
        EXPECT_EQ(blueOf(animated, clip, frame), frame + added);
    for (const auto& [frame, added] : {std::pair{0, 0}, {5, 10}, {15, 30}, {50, 40}})
        EXPECT_EQ(blueOf(mixed, clip, frame), frame + added);
}

TEST(FilterChain, TellsTheClockInFields) {
    struct Case {
        Interlacing interlacing;
        int upperTime, lowerTime, upperField, lowerField;
    };
    for (const Case& c :
         {Case{Interlacing::Progressive, 14, 14, 0, 0}, Case{Interlacing::TopFieldFirst, 14, 15, 1, 2},
          Case{Interlacing::BottomFieldFirst, 15, 14, 1, 2}}) {
        const PicturePtr woven = render(chainOf({"add stamp"}), numberedClip(9, c.interlacing), 7);
        for (int y = 0; y < woven->height(); ++y) {
            EXPECT_EQ(woven->row(y)[0], y % 2 == 0 ? c.upperTime : c.lowerTime) << y;
            EXPECT_EQ(woven->row(y)[1], y % 2 == 0 ? c.upperField : c.lowerField) << y;
            EXPECT_EQ(woven->row(y)[2], 18) << "the clip's length";
        }
    }
}

TEST(FilterChain, GivesEarlierFramesAsTheFiltersBeforeMakeThem) {
    EXPECT_EQ(chainOf({"deep"}).lookBack(), 0);
    EXPECT_EQ(chainOf({"echo", "deep", "echo"}).lookBack(), 16);
    const Clip clip = numberedClip(12);
    const auto echoOf = [](int n) { return 10 * n - std::max(n - 2, 0); };
    for (const int frame : {0, 1, 2, 9}) EXPECT_EQ(blueOf(chainOf({"echo"}), clip, frame), echoOf(frame));

    // What is added before the echo depends on the frame that is asked for.
    const FilterChain behind = chainOf({"addv:amount=0@0f..100@100f", "echo"});
    EXPECT_EQ(blueOf(behind, clip, 6), 10 * (6 + 6) - (4 + 4));
    EXPECT_EQ(blueOf(chainOf({"echo", "echo"}), clip, 5), (10 * echoOf(5) - echoOf(3)) & 0xFF);
}

TEST(FilterChain, NamesAnEarlierFrameThatIsNoLongerThere) {
    const Clip clip({nullptr, nullptr, nullptr, plainPicture(3, 2, 0)});
    EXPECT_THAT([&] { render(chainOf({"echo"}), clip, 3); },
                testing::ThrowsMessage<Error>("frame 1 is no longer there for frame 3"));
}

TEST(FilterChain, GivesEarlierFieldsOfTheSameParity) {
    // Upper rows hold the frame's number, lower ones 100 more.
    for (const int height : {2, 3, 7, 8}) {
        std::vector<PicturePtr> frames;
        for (int i = 0; i < 12; ++i) {
            const auto frame = plainPicture(3, height, i);
            for (int y = 1; y < height; y += 2) std::memset(frame->row(y), 100 + i, 12);
            frames.push_back(frame);
        }
        const Clip clip(std::move(frames), Interlacing::TopFieldFirst);
        const FilterChain chain = chainOf({"addv:amount=1", "echo"});
        // Where a field asks for what lies before the clip's begin, it gets the begin.
        for (const auto& [frame, earlier] : {std::pair{10, 6}, {3, 0}}) {
            const PicturePtr result = render(chain, clip, frame);
            ASSERT_EQ(result->height(), height);
            for (int y = 0; y < height; ++y) {
                const int base = y % 2 == 0 ? 1 : 101;
                EXPECT_EQ(result->row(y)[8], (10 * (base + frame) - (base + earlier)) & 0xFF) << y;
                EXPECT_EQ(result->row(y)[9], base - 1 + frame) << y;
            }
        }
    }
}

TEST(FilterChain, LetsFailuresOfBandsThrough) {
    static std::atomic<int> callsUntilFailure;
    hosting::Filter failing = test::fakeFilters()[1];
    failing.properties.matchName = "QULN Antialias";  // one that is rendered in bands
    failing.entry = [](void*, std::int16_t selector, FilterInvocation**) -> std::int32_t {
        return selector == FilterSelectorExecute && --callsUntilFailure == 0 ? 7 : 0;
    };
    const std::vector<hosting::Filter> known = {failing};
    const FilterChain chain = chainOf({"add stamp"}, std::nullopt, known);
    const Clip clip({plainPicture(9, 900, 1)});
    WorkerPool workers(3);
    for (const int call : {1, 7, 20}) {
        callsUntilFailure = call;
        EXPECT_THROW(render(chain, clip, 0, {&workers, {}}), std::runtime_error) << call;
    }
    callsUntilFailure = 0;
    EXPECT_NO_THROW(render(chain, clip, 0, {&workers, {}}));
}

TEST(FilterChain, GivesEachOfTwoFramesAtOnceItsOwnSettings) {
    static test::Gathering* renderings;
    test::Gathering both(2);
    renderings = &both;
    hosting::Filter waiting = test::fakeFilters()[0];
    waiting.entry = [](void* data, std::int16_t selector, FilterInvocation** invocation) -> std::int32_t {
        if (selector == FilterSelectorExecute) renderings->join();
        return test::fakeFilters()[0].entry(data, selector, invocation);
    };
    const std::vector<hosting::Filter> known = {waiting};
    const FilterChain chain = chainOf({"addv:amount=0@0f..100@100f"}, std::nullopt, known);
    const Clip clip = numberedClip(60);
    int early = 0;
    std::thread beside([&] { early = blueOf(chain, clip, 10); });
    EXPECT_EQ(blueOf(chain, clip, 50), 100);
    beside.join();
    EXPECT_EQ(early, 20);
}

TEST(FilterChain, NegotiatesThePixelFormat) {
    const auto bgra16 = PixKit::formatCode("Bgra");
    EXPECT_EQ(chainOf({"deep"}).sourceFormat(8), PixKit::formatBgra);
    for (const int depth : {10, 32}) EXPECT_EQ(chainOf({"deep"}).sourceFormat(depth), bgra16);
    EXPECT_EQ(chainOf({"deep"}, PixKit::formatBgra).sourceFormat(16), PixKit::formatBgra);
    EXPECT_EQ(chainOf({"deep"}, bgra16).sourceFormat(8), bgra16);
    EXPECT_EQ(chainOf({"deep", "addv"}, PixKit::formatVuya).sourceFormat(16), PixKit::formatBgra);
    EXPECT_EQ(chainOf({"addv"}).sourceFormat(16), PixKit::formatBgra);

    EXPECT_THROW(chainOf({"addv"}, PixKit::formatCode("vuya")), Error);
    EXPECT_THROW(chainOf({"deep"}, PixKit::formatCode("BGra")), Error);
    EXPECT_THROW(chainOf({"deep", "addv"}, PixKit::formatCode("Bgra")), Error);
    EXPECT_THROW(chainOf({"deep"}, PixKit::formatCode("argb")), Error);
}

TEST(Vuya, FollowsStudioRangeBothWays) {
    using Bytes = std::vector<int>;
    std::vector<std::pair<Bytes, Bytes>> cases = {
        {{0, 0, 255, 255}, {240, 90, 81, 255}},
        {{0, 255, 0, 255}, {34, 54, 145, 255}},
        {{255, 0, 0, 255}, {110, 240, 41, 255}},
    };
    for (int grey = 0; grey < 256; ++grey)
        cases.push_back({{grey, grey, grey, 0}, {128, 128, 16 + (219 * grey + 127) / 255, 0}});
    const auto picture = [](const Bytes& pixel, std::uint32_t format) {
        auto made = std::make_shared<Picture>(1, 1, format);
        std::copy(pixel.begin(), pixel.end(), made->row(0));
        return made;
    };
    for (const auto& [bgra, vuyaDue] : cases) {
        const auto vuya = vuyaFromBgra(*picture(bgra, PixKit::formatBgra));
        EXPECT_EQ(vuya->format(), PixKit::formatVuya);
        EXPECT_EQ(Bytes(vuya->row(0), vuya->row(0) + 4), vuyaDue);
        const auto back = bgraFromVuya(*vuya);
        for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(back->row(0)[i], bgra[i], 2);
    }
    // What lies outside the colour cube is cut.
    EXPECT_EQ(bgraFromVuya(*picture({255, 0, 255, 1}, PixKit::formatVuya))->row(0)[2], 255);
}

}  // namespace
}  // namespace vireo
