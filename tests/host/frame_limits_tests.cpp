// SPDX-License-Identifier: MIT
// Every filter of the module over frames that are far wider or higher than people use, held against what it
// makes of small ones: right up to its limits, wrong just beyond, right at any size without limits.
#include "host/hosting/filter_instance.h"
#include "host/hosting/filter_traits.h"
#include "host/hosting/meta_plugin.h"
#include "tests/support/test_frame.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <utility>

namespace {

/// A picture along a direction: `length` pixels long and `breadth` across.
enum class Direction { Wide, High };

class Frame {
public:
    Frame(Direction direction, int length, int breadth, int padding = 0)
        : direction_(direction),
          frame_({.width = direction == Direction::Wide ? length : breadth,
                  .height = direction == Direction::Wide ? breadth : length,
                  .padding = 4 * padding}) {}

    FrameBuffer* handle() { return frame_.handle(); }
    int length() const {
        return direction_ == Direction::Wide ? frame_.geometry().width : frame_.geometry().height;
    }
    int breadth() const {
        return direction_ == Direction::Wide ? frame_.geometry().height : frame_.geometry().width;
    }

    /// `along` the direction and `across`, rows counted in memory.
    std::uint32_t at(int along, int across) {
        std::uint32_t pixel;
        std::memcpy(&pixel, address(along, across), 4);
        return pixel;
    }
    void paint(const std::function<std::uint32_t(int along, int across)>& pixelAt) {
        for (int across = 0; across < breadth(); ++across) {
            for (int along = 0; along < length(); ++along) {
                const std::uint32_t pixel = pixelAt(along, across);
                std::memcpy(address(along, across), &pixel, 4);
            }
        }
    }
    /// Whether every pixel is the one of this place in another frame.
    bool equals(const std::function<std::uint32_t(int along, int across)>& pixelAt) {
        for (int across = 0; across < breadth(); ++across) {
            for (int along = 0; along < length(); ++along) {
                if (at(along, across) != pixelAt(along, across)) return false;
            }
        }
        return true;
    }

private:
    std::uint8_t* address(int along, int across) {
        return direction_ == Direction::Wide ? frame_.row(across) + 4 * along
                                             : frame_.row(along) + 4 * across;
    }

    Direction direction_;
    TestFrame frame_;
};

/// How a filter is set and rendered in this test.
struct Setup {
    std::vector<std::pair<const char*, int>> parameters;
    std::uint32_t time = 0;
};

void render(const hosting::Filter& filter, const Setup& setup, Frame& source, Frame& destination) {
    const hosting::FilterInstance instance(filter.entry);
    for (const auto& [name, value] : setup.parameters) {
        const auto& all = filter.properties.parameters;
        const auto found = std::find_if(all.begin(), all.end(),
                                        [&](const auto& parameter) { return parameter.name == name; });
        ASSERT_NE(found, all.end()) << name;
        std::memcpy(instance.settings().data() + found->offset, &value,
                    static_cast<std::size_t>(found->size));
    }
    ASSERT_EQ(instance.render({.source = source.handle(),
                               .destination = destination.handle(),
                               .time = setup.time,
                               .duration = 60}),
              0);
}

/// Whether the filter renders a frame of this length right. A rule knows how without rendering one.
using Rule = bool (*)(const hosting::Filter& filter, const Setup& setup, Direction direction, int length,
                      int padding);

/// For filters whose pixels depend on their neighbourhood and on the edges alone: a picture with a plain
/// middle gives the same with a longer middle.
bool rightWhenStretched(const hosting::Filter& filter, const Setup& setup, Direction direction, int length,
                        int padding) {
    constexpr int shortLength = 400, breadth = 5, edge = 60;
    Frame source(direction, shortLength, breadth), expected(direction, shortLength, breadth);
    Frame longSource(direction, length, breadth, padding), result(direction, length, breadth, padding);
    Random random(1);
    const auto shortPlace = [length](int along) {
        return along < shortLength / 2             ? along
               : along >= length - shortLength / 2 ? along - (length - shortLength)
                                                   : shortLength / 2;
    };
    source.paint([&](int along, int across) {
        const bool plain = along >= edge && along < shortLength - edge;
        return plain ? source.at(edge - 1, direction == Direction::Wide ? across : 0)
                     : static_cast<std::uint32_t>(random());
    });
    longSource.paint([&](int along, int across) { return source.at(shortPlace(along), across); });
    render(filter, setup, source, expected);
    render(filter, setup, longSource, result);
    return result.equals([&](int along, int across) { return expected.at(shortPlace(along), across); });
}

/// For filters whose geometry goes with the frame's size: a gradient of twice the size gives twice the
/// picture, but for roundings.
bool rightWhenScaled(const hosting::Filter& filter, const Setup& setup, Direction direction, int length,
                     int) {
    constexpr int breadth = 96, tolerance = 8;
    Frame halfSource(direction, length / 2, breadth / 2), half(direction, length / 2, breadth / 2);
    Frame wholeSource(direction, length, breadth), whole(direction, length, breadth);
    for (const auto& [source, result] : {std::pair{&halfSource, &half}, {&wholeSource, &whole}}) {
        source->paint([&, frame = source](int along, int across) {
            const auto red = static_cast<std::uint32_t>(std::int64_t{along} * 255 / frame->length());
            const auto green = static_cast<std::uint32_t>(across * 255 / frame->breadth());
            return 0xFF000000 | red << 16 | green << 8;
        });
        render(filter, setup, *source, *result);
    }

    // Where an edge or a seam is, neighbours of both sizes may lie on its two sides.
    constexpr int samples = 1000;
    int different = 0;
    for (int sample = 0; sample < samples; ++sample) {
        const int along = static_cast<int>(std::int64_t{sample} * (length / 2 - 1) / (samples - 1));
        for (const int across : {breadth / 8, breadth / 4 + 2}) {
            for (int i = 0; i < 4; ++i) {
                const int apart =
                    channelOf(whole.at(2 * along, 2 * across), i) - channelOf(half.at(along, across), i);
                if (std::abs(apart) > tolerance) ++different;
            }
        }
    }
    return different < samples / 100;
}

/// Rows one after another are rotated 16 pixels further, kept inside the row by one subtraction.
bool rightWhenRotated(const hosting::Filter& filter, const Setup& setup, Direction direction, int length,
                      int) {
    constexpr int step = 16;
    const bool wide = direction == Direction::Wide;
    const int width = wide ? length : 64, height = wide ? length / step + 8 : length;
    Frame source(Direction::Wide, width, height), result(Direction::Wide, width, height);
    Random random(2);
    source.paint([&](int, int) { return static_cast<std::uint32_t>(random()); });
    render(filter, setup, source, result);
    std::vector<int> shifts(1);
    for (int row = 1; row < height; ++row) {
        const int shift = shifts.back() + step;
        shifts.push_back(shift > width ? shift - width : shift);
    }
    return result.equals(
        [&](int x, int row) { return source.at((x + shifts[static_cast<std::size_t>(row)]) % width, row); });
}

/// At the end of its cycle the roll has come round.
bool rightWhenRolledRound(const hosting::Filter& filter, const Setup& setup, Direction direction, int length,
                          int) {
    Frame source(direction, length, 3), result(direction, length, 3);
    Random random(3);
    source.paint([&](int, int) { return static_cast<std::uint32_t>(random()); });
    render(filter, setup, source, result);
    return result.equals([&](int along, int across) { return source.at(along, across); });
}

/// A lens that bends nothing moves pixels by less than one, but for those at the border.
bool rightWhenNeutral(const hosting::Filter& filter, const Setup& setup, Direction direction, int length,
                      int) {
    constexpr int breadth = 5, tolerance = 8;
    Frame source(direction, length, breadth), result(direction, length, breadth);
    source.paint([](int along, int) { return along % 2 == 0 ? 0xFFFFFFFF : 0xFF000000; });
    render(filter, setup, source, result);
    for (int along = 1; along < length - 1; ++along) {
        const int apart =
            channelOf(result.at(along, breadth / 2), 0) - channelOf(source.at(along, breadth / 2), 0);
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

void expectLimits(const hosting::Filter& filter, Direction direction) {
    const Case tested = caseOf(filter.properties.matchName);
    const auto right = [&](int length, int padding = 0) {
        return tested.rule(filter, tested.setup, direction, length, padding);
    };
    const hosting::FrameLimits limits = hosting::filterTraits(filter.properties.matchName).limits;
    const bool wide = direction == Direction::Wide;
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
    ASSERT_EQ(module.filters().size(), 22U);
    for (const hosting::Filter& filter : module.filters()) {
        for (const Direction direction : {Direction::Wide, Direction::High}) {
            SCOPED_TRACE(filter.properties.name + (direction == Direction::Wide ? ", wide" : ", high"));
            expectLimits(filter, direction);
        }
    }
}

TEST(FrameLimits, AreToldInASentenceThatNamesFilterSizeAndLimit) {
    const hosting::FrameLimits limits{.width = 100, .height = 200, .rowBytes = 300};
    const auto refusal = [&](std::int32_t width, std::int32_t height, std::int64_t rowBytes) {
        return hosting::frameRefusal("Some Filter", limits, width, height, rowBytes);
    };
    EXPECT_EQ(refusal(100, 200, 300), "");
    EXPECT_EQ(refusal(100, 200, -300), "");
    EXPECT_EQ(refusal(101, 200, 300), "Some Filter takes frames up to 100 pixels wide, not 101");
    EXPECT_EQ(refusal(100, 201, 300), "Some Filter takes frames up to 200 pixels high, not 201");
    for (const int rowBytes : {304, -304}) {
        EXPECT_EQ(refusal(76, 200, rowBytes),
                  "Some Filter takes rows of up to 300 bytes, and those of 76 pixels have 304");
    }
    EXPECT_EQ(hosting::frameRefusal("", hosting::filterTraits("of another module").limits, 1 << 30, 1 << 30,
                                    1LL << 40),
              "");
}

}  // namespace
