// SPDX-License-Identifier: MIT
#include "filters/warp/bend.h"
#include "host/pixkit/pixkit.h"
#include "tests/support/filter_under_test.h"

#include <cmath>

namespace {

constexpr std::uint32_t bendId = 10004;

constexpr Bend::AxisSettings defaultAxis{0, 0, 15, 4, 50};
constexpr Bend::AxisSettings still{0, 0, 0, 4, 50};

int waveAt(int wave, int index) {
    const double circle = 32 * std::sqrt(1000000.0 - std::pow(index < 2000 ? index - 1000 : index - 2999, 2));
    switch (wave) {
        case Bend::Sine: return static_cast<int>(32000 * std::sin(index * 3.14159 / 2000));
        case Bend::Circle: return index < 2000 ? static_cast<int>(circle) : -static_cast<int>(circle);
        case Bend::Triangle:
            return index <= 1000 ? 32 * index : index <= 3000 ? 64000 - 32 * index : 32 * index - 128000;
        default: return index < 2000 ? 32000 : -32000;
    }
}

/// Which sample of the wave a line takes, or -1 for none.
int sampleOf(int line, int count, int direction) {
    const int half = count / 2;
    switch (direction) {
        case Bend::Backward: return line;
        case Bend::Forward: return count - 1 - line;
        case Bend::In: return line >= 2 * half ? -1 : line >= half ? line - half : half - 1 - line;
        case Bend::Out: return line < half ? line : line >= count - half ? count - 1 - line : -1;
        default: return -1;
    }
}

/// In pixels of a line of `length`.
int insetOf(int line, int count, int length, const Bend::AxisSettings& axis, int step) {
    const int sample = sampleOf(line, count, axis.direction);
    const int period = axis.width * count / 100;
    if (sample < 0 || period == 0 || axis.wave > Bend::Square) return 0;
    const int phase = (axis.rate * step / 4 + sample) % period;
    const int index = (phase * 4000 / period + 4000) % 4000;
    const int half = axis.intensity / 2;
    const auto swing = static_cast<int>(256LL * half * waveAt(axis.wave, index) / 32000);
    return static_cast<int>((256LL * half + swing) * length / 25600);
}

Picture bent(TestFrame& source, const Bend::Settings& settings, int step) {
    Random random(40);
    TestFrame between(source.geometry(), random), result(source.geometry(), random);
    const FrameRect bounds = source.handle()->bounds;
    const int width = source.geometry().width, height = source.geometry().height;
    FrameBuffer* from = source.handle();
    if (settings.horizontal.intensity != 0) {
        vpixFillRect(between.handle(), &bounds, settings.fillColor);
        // Columns are numbered from 0 wherever the frame begins.
        for (int x = std::max(bounds.left, 0); x < bounds.right; ++x) {
            const int inset = x < width ? insetOf(x, width, height, settings.horizontal, step) : 0;
            const FrameRect part{x, bounds.top + inset, x + 1, bounds.bottom - inset};
            const FrameRect column{x, bounds.top, x + 1, bounds.bottom};
            vpixCopy(from, between.handle(), &part, &column, VPixCopyReplaceColumns);
        }
        from = between.handle();
    }
    if (settings.vertical.intensity == 0) {
        vpixCopy(from, result.handle(), &bounds, &bounds, VPixCopyReplace);
        return result.picture();
    }
    vpixFillRect(result.handle(), &bounds, settings.fillColor);
    for (int y = std::max(bounds.top, 0); y < bounds.bottom; ++y) {
        const int inset = y < height ? insetOf(y, height, width, settings.vertical, step) : 0;
        const FrameRect part{bounds.left + inset, y, bounds.right - inset, y + 1};
        const FrameRect row{bounds.left, y, bounds.right, y + 1};
        vpixCopy(from, result.handle(), &part, &row, VPixCopyReplace);
    }
    return result.picture();
}

std::vector<std::uint8_t> stored(const Bend::Settings& settings) {
    std::vector<std::uint8_t> bytes(sizeof settings);
    std::memcpy(bytes.data(), &settings, sizeof settings);
    return bytes;
}

Bend::AxisSettings randomAxis(Random& random) {
    const auto below = [&](unsigned limit) { return static_cast<std::uint16_t>(random() % limit); };
    return {below(5), below(5), static_cast<std::int16_t>(below(31)), static_cast<std::int16_t>(below(17)),
            static_cast<std::int16_t>(below(91))};
}

TEST(Bend, FirstColumnOfTheDefaults) {
    EXPECT_EQ(insetOf(0, 720, 480, defaultAxis, 0), 33);
    EXPECT_EQ(insetOf(90, 720, 480, defaultAxis, 0), 67) << "the crest, a quarter of a period of 360 on";
    EXPECT_EQ(insetOf(270, 720, 480, defaultAxis, 0), 0) << "the trough";
    EXPECT_EQ(insetOf(80, 720, 480, defaultAxis, 10), 67)
        << "ten steps later the crest is ten columns nearer";

    Random random(41);
    TestFrame source({.width = 720, .height = 480}, random);
    FilterUnderTest filter(bendId);
    filter.setSettings(stored({defaultAxis, still, 0}));
    const Picture result = filter.rendered(source);
    TestFrame column({.width = 1, .height = 480});
    const FrameRect part{0, 33, 1, 447}, whole{0, 0, 1, 480};
    vpixCopy(source.handle(), column.handle(), &part, &whole, VPixCopyReplace);
    for (int y = 0; y < 480; ++y) ASSERT_EQ(result.at(0, y), column.picture().at(0, y)) << y;
}

TEST(Bend, EqualsThePlainVersionOnAnyFrame) {
    Random random(42);
    FilterUnderTest filter(bendId);
    for (const Geometry& geometry : awkwardGeometries()) {
        TestFrame source(geometry, random);
        const Bend::Settings settings{randomAxis(random), randomAxis(random),
                                      static_cast<std::uint32_t>(random())};
        filter.setSettings(stored(settings));
        filter.invocation.frameTime = static_cast<std::uint32_t>(random() % 400);
        const auto step = static_cast<int>(filter.invocation.frameTime);
        EXPECT_TRUE(samePicture(bent(source, settings, step), filter.rendered(source)))
            << geometry << ", step " << step;
    }
}

TEST(Bend, TimeRunsInFieldDurations) {
    Random random(43);
    TestFrame source({.width = 60, .height = 40}, random);
    FilterUnderTest filter(bendId);
    const TimeBase timeBase{{}, 1001};
    filter.invocation.timeBase = &timeBase;
    const Bend::Settings defaults{defaultAxis, defaultAxis, 0x00FFFFFF};
    const struct {
        std::uint32_t time;
        int step;
    } cases[] = {{0, 0}, {1000, 0}, {1001, 1}, {20020, 20}, {0xFFFFFC18, 0}, {0xFFFFB1CC, -20}};
    for (const auto& example : cases) {
        filter.invocation.frameTime = example.time;
        EXPECT_TRUE(samePicture(bent(source, defaults, example.step), filter.rendered(source)))
            << example.time;
    }
}

TEST(Bend, WithoutIntensityOrDirectionThePictureStays) {
    Random random(44);
    TestFrame source({.width = 31, .height = 17}, random);
    FilterUnderTest filter(bendId);
    for (const Bend::Settings& settings :
         {Bend::Settings{still, still, 0}, Bend::Settings{{4, 0, 30, 4, 50}, {65535, 0, 30, 4, 50}, 0},
          Bend::Settings{{0, 4, 30, 4, 50}, {0, 65535, 30, 4, 50}, 0},
          Bend::Settings{{0, 0, 30, 4, 3}, {0, 0, 30, 4, 5}, 0}}) {
        filter.setSettings(stored(settings));
        EXPECT_TRUE(samePicture(source.picture(), filter.rendered(source)));
    }
}

TEST(Bend, WithoutAWorkBufferTheSourceIsOverwritten) {
    Random random(45);
    TestFrame source({.width = 30, .height = 20}, random);
    TestFrame destination({.width = 30, .height = 20}, random);
    const Bend::Settings settings{defaultAxis, defaultAxis, 0x00FFFFFF};
    const Picture expected = bent(source, settings, 7);
    const Picture columnsOnly = bent(source, {defaultAxis, still, 0x00FFFFFF}, 7);
    Bend::bend(source.handle(), destination.handle(), nullptr, 7, settings);
    EXPECT_TRUE(samePicture(expected, destination.picture()));
    EXPECT_TRUE(samePicture(columnsOnly, source.picture()));
}

TEST(Bend, AFrameWithoutPixelsFails) {
    TestFrame source({.width = 0, .height = 5}), destination({.width = 4, .height = 5});
    FilterUnderTest filter(bendId);
    filter.invocation.sourceFrame = source.handle();
    filter.invocation.destFrame = destination.handle();
    EXPECT_EQ(filter.call(FilterSelectorExecute), 1);
    EXPECT_TRUE(samePicture(Picture{4, 5}, destination.picture()));
}

TEST(Bend, SurvivesAnySettings) {
    Random random(46);
    TestFrame source({.width = 40, .height = 30}, random);
    TestFrame destination({.width = 25, .height = 18}, random);
    FilterUnderTest filter(bendId);
    for (int turn = 0; turn < 300; ++turn) {
        std::vector<std::uint8_t> bytes(24);
        for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random() % 3 == 0 ? 0x80 : random());
        filter.setSettings(bytes);
        filter.invocation.frameTime = static_cast<std::uint32_t>(random());
        filter.render(source, destination);
        ASSERT_TRUE(destination.guardsHold());
    }
    for (const FrameRect bounds : {FrameRect{INT32_MAX - 40, 0, INT32_MAX, 30},
                                   FrameRect{INT32_MIN, INT32_MIN, INT32_MIN + 40, INT32_MIN + 30}}) {
        source.handle()->bounds = destination.handle()->bounds = bounds;
        destination.handle()->bounds.right = bounds.left + 25;
        destination.handle()->bounds.bottom = bounds.top + 18;
        filter.render(source, destination);
        EXPECT_TRUE(destination.guardsHold());
    }
}

}  // namespace
