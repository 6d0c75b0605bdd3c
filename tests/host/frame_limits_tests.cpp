// SPDX-License-Identifier: MIT
// Every filter of the module over frames that are far wider or higher than people use, held against what it
// makes of small ones: right up to its limits, wrong just beyond, right at any size without limits.
#include "host/hosting/filter_instance.h"
#include "host/hosting/filter_traits.h"
#include "host/hosting/meta_plugin.h"
#include "host/hosting/parameter_value.h"
#include "tests/support/test_frame.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <utility>

namespace {

/// How a filter is set and rendered in this test.
struct Setup {
    std::vector<std::pair<const char*, int>> parameters;
    std::uint32_t time = 0;
};

/// A filter over pictures that are long in one direction.
struct Tested {
    const hosting::Filter& filter;
    const Setup& setup;
    bool wide;  ///< Or high.

    /// `along` the direction and `across`, rows counted in memory.
    std::uint32_t& at(Picture& picture, int along, int across) const {
        return wide ? picture.at(along, across) : picture.at(across, along);
    }
    template <class PixelAt>
    Picture painted(int length, int breadth, PixelAt&& pixelAt) const {
        Picture picture{wide ? length : breadth, wide ? breadth : length};
        for (int across = 0; across < breadth; ++across) {
            for (int along = 0; along < length; ++along) at(picture, along, across) = pixelAt(along, across);
        }
        return picture;
    }
    Picture rendered(const Picture& picture, int padding = 0) const {
        const Geometry geometry{.width = picture.width, .height = picture.height, .padding = 4 * padding};
        TestFrame source(geometry, picture), destination(geometry);
        const hosting::FilterInstance instance(filter.entry);
        for (const auto& [name, value] : setup.parameters) {
            const auto& all = filter.properties.parameters;
            const auto found = std::ranges::find(all, name, &hosting::Parameter::name);
            hosting::writeValue(*found, value, instance.settings());
        }
        EXPECT_EQ(instance.render({.source = source.handle(),
                                   .destination = destination.handle(),
                                   .time = setup.time,
                                   .duration = 60}),
                  0);
        return destination.picture();
    }
};

/// Whether the filter renders a frame of this length right. A rule knows how without rendering one.
using Rule = bool (*)(const Tested& tested, int length, int padding);

/// For filters whose pixels depend on their neighbourhood and on the edges alone: a picture with a plain
/// middle gives the same with a longer middle.
bool rightWhenStretched(const Tested& tested, int length, int padding) {
    constexpr int shortLength = 400, breadth = 5, edge = 60;
    Random random(1);
    Picture source = tested.painted(shortLength, breadth, [&](int along, int across) {
        const bool plain = along >= edge && along < shortLength - edge;
        return plain ? 0xFF6040A0 + 0x070503 * (tested.wide ? across : 0) : random();
    });
    const auto stretched = [&](Picture picture) {
        return tested.painted(length, breadth, [&](int along, int across) {
            const int fromEnd = along - (length - shortLength);
            return tested.at(picture, std::max(std::min(along, shortLength / 2), fromEnd), across);
        });
    };
    return tested.rendered(stretched(source), padding) == stretched(tested.rendered(source));
}

/// For filters whose geometry goes with the frame's size: a gradient of twice the size gives twice the
/// picture, but for roundings.
bool rightWhenScaled(const Tested& tested, int length, int) {
    constexpr int breadth = 96, tolerance = 8;
    const auto gradient = [&](int part) {
        return tested.rendered(tested.painted(length / part, breadth / part, [&](int along, int across) {
            const auto red = static_cast<int>(std::int64_t{along} * 255 / (length / part));
            return pixelOf(0, across * 255 / (breadth / part), red, 255);
        }));
    };
    Picture whole = gradient(1), half = gradient(2);

    // Where an edge or a seam is, neighbours of both sizes may lie on its two sides.
    constexpr int samples = 1000;
    int different = 0;
    for (int sample = 0; sample < samples; ++sample) {
        const int along = static_cast<int>(std::int64_t{sample} * (length / 2 - 1) / (samples - 1));
        for (const int across : {breadth / 8, breadth / 4 + 2}) {
            const std::uint32_t pixel = tested.at(whole, 2 * along, 2 * across);
            for (int i = 0; i < 4; ++i) {
                const int apart = channelOf(pixel, i) - channelOf(tested.at(half, along, across), i);
                if (std::abs(apart) > tolerance) ++different;
            }
        }
    }
    return different < samples / 100;
}

/// Rows one after another are rotated 16 pixels further, kept inside the row by one subtraction.
bool rightWhenRotated(const Tested& tested, int length, int) {
    constexpr int step = 16;
    Random random(2);
    Picture source = tested.wide ? noise(length, length / step + 8, random) : noise(64, length, random);
    Picture expected = source;
    int shift = 0;
    for (int row = 1; row < source.height; ++row) {
        shift += step;
        if (shift > source.width) shift -= source.width;
        std::rotate_copy(source.row(row), source.row(row) + shift, source.row(row + 1), expected.row(row));
    }
    return tested.rendered(source) == expected;
}

/// At the end of its cycle the roll has come round.
bool rightWhenRolledRound(const Tested& tested, int length, int) {
    Random random(3);
    const Picture source = tested.painted(length, 3, [&](int, int) { return random(); });
    return tested.rendered(source) == source;
}

/// A lens that bends nothing moves pixels by less than one, but for those at the border.
bool rightWhenNeutral(const Tested& tested, int length, int) {
    constexpr int breadth = 5, tolerance = 8;
    Picture source = tested.painted(length, breadth,
                                    [](int along, int) { return along % 2 == 0 ? 0xFFFFFFFF : 0xFF000000; });
    Picture result = tested.rendered(source);
    for (int along = 1; along < length - 1; ++along) {
        const int apart = channelOf(tested.at(result, along, breadth / 2), 0) -
                          channelOf(tested.at(source, along, breadth / 2), 0);
        if (std::abs(apart) > tolerance) return false;
    }
    return true;
}

struct Case {
    Rule rule = rightWhenStretched;
    Setup setup{};
    int firstWrong = 1;  ///< So many pixels beyond the limit the picture shows it.
};

/// Filters that are not stretched, or do nothing at first.
Case caseOf(const std::string& matchName) {
    static const std::map<std::string, Case> cases{
        {"QULN Bend",
         {rightWhenScaled,
          {{{"Horizontal Frequency", 1},
            {"Horizontal Source", 0},
            {"Horizontal Intensity", 30},
            {"Horizontal Width", 90},
            {"Vertical Frequency", 1},
            {"Vertical Source", 0},
            {"Vertical Intensity", 30},
            {"Vertical Width", 90}}}}},
        {"QULN Camera Blur", {rightWhenScaled, {{{"Percent Blur", 30}}}}},
        {"QULN Camera View", {rightWhenScaled, {{{"Zoom", 120}}}}},
        {"QULN Color Balance", {rightWhenStretched, {{{"Red", 100}}}}},
        {"QULN Color Replace", {rightWhenStretched, {{{"Similarity", 100}}}}},
        {"QULN Gamma Correction", {rightWhenStretched, {{{"Gamma", 20}}}}},
        {"QULN Horizontal Hold", {rightWhenRotated, {{{"Offset", 16 << 16}, {"End Step", 16 << 16}}}}},
        // Its last place is seen from the pixel but one that lies behind it.
        {"QULN Lens Distortion", {rightWhenNeutral, {}, 3}},
        {"QULN Levels", {rightWhenStretched, {{{"(RGB) White Input Level", 100}}}}},
        {"QULN Replicate", {rightWhenScaled, {{{"Count", 3}}}}},
        {"QULN Vertical Hold", {rightWhenRolledRound, {{}, 29}}},
    };
    const auto found = cases.find(matchName);
    return found == cases.end() ? Case{} : found->second;
}

void expectLimits(const hosting::Filter& filter, bool wide) {
    const Case tested = caseOf(filter.properties.matchName);
    const auto right = [&](int length, int padding = 0) {
        return tested.rule({filter, tested.setup, wide}, length, padding);
    };
    const hosting::FrameLimits limits = hosting::filterTraits(filter.properties.matchName).limits;
    const std::int32_t limit = wide ? std::min(limits.width, limits.rowBytes / 4) : limits.height;
    if (limit == (wide ? hosting::FrameLimits::none / 4 : hosting::FrameLimits::none)) {
        for (const int length : {40000, 70000}) EXPECT_TRUE(right(length)) << length;
        return;
    }
    EXPECT_TRUE(right(limit)) << limit;
    EXPECT_FALSE(right(limit + tested.firstWrong)) << limit + tested.firstWrong;
    if (!wide || limits.rowBytes == hosting::FrameLimits::none) return;
    constexpr int narrow = 500;
    const int padding = limits.rowBytes / 4 - narrow;
    EXPECT_TRUE(right(narrow, padding));
    EXPECT_FALSE(right(narrow, padding + 1)) << "rows of more bytes";
}

TEST(FrameLimits, AreThoseOfTheFilters) {
    const hosting::MetaPlugin module{VIREO_TESTED_MODULE};
    for (const hosting::Filter& filter : module.filters()) {
        for (const bool wide : {true, false}) {
            SCOPED_TRACE(filter.properties.name + (wide ? ", wide" : ", high"));
            expectLimits(filter, wide);
        }
    }
}

TEST(FrameLimits, AreToldInASentenceThatNamesFilterSizeAndLimit) {
    const hosting::FrameLimits limits{.width = 100, .height = 200, .rowBytes = 300};
    const auto refusal = [&](std::int32_t width, std::int32_t height, std::int64_t rowBytes) {
        return hosting::frameRefusal("Some Filter", limits, width, height, rowBytes);
    };
    EXPECT_EQ(refusal(100, 200, -300), "");
    EXPECT_EQ(refusal(101, 200, 300), "Some Filter takes frames up to 100 pixels wide, not 101");
    EXPECT_EQ(refusal(100, 201, 300), "Some Filter takes frames up to 200 pixels high, not 201");
    EXPECT_EQ(refusal(76, 200, -304),
              "Some Filter takes rows of up to 300 bytes, and those of 76 pixels have 304");
    EXPECT_EQ(hosting::frameRefusal("", {}, 1 << 30, 1 << 30, 1LL << 40), "");
}

}  // namespace
