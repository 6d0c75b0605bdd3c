// SPDX-License-Identifier: MIT
#include "filters/warp/extract.h"
#include "tests/filters/support/kernel_rows.h"

namespace {

constexpr std::uint32_t extractId = 10022;

/// Each entry by itself, for settings in their ranges.
int curveAt(int entry, const Extract::Settings& settings) {
    const int soft = (settings.high - settings.low) * settings.softness / 200;
    const auto clamped = [](int value) { return value < 0 ? 0 : value > 255 ? 255 : value; };
    const int riseBegin = clamped(settings.low - soft), riseEnd = clamped(settings.low + soft);
    const int fallBegin = clamped(settings.high - soft), fallEnd = clamped(settings.high + soft);
    int value = 0;
    if (entry >= fallEnd) {
        value = 0;
    } else if (entry >= fallBegin) {
        value = (255 * (fallEnd - fallBegin) - 255 * (entry - fallBegin)) / (2 * soft);
    } else if (entry >= riseEnd) {
        value = 255;
    } else if (entry >= riseBegin) {
        value = 255 * (entry - riseBegin) / (2 * soft);
    }
    return settings.invert != 0 ? 255 - value : value;
}

std::uint32_t matte(std::uint32_t pixel, const TransferCurve& curve) {
    const int luminance = channelOf(pixel, 2) * 299 / 1000 + channelOf(pixel, 1) * 587 / 1000 +
                          channelOf(pixel, 0) * 114 / 1000;
    const int key = curve[static_cast<std::size_t>(luminance)];
    return pixelOf(key, key, key, channelOf(pixel, 3));
}

std::vector<std::uint8_t> stored(const Extract::Settings& settings) {
    auto bytes = littleEndian({settings.low, settings.high, settings.softness});
    bytes.push_back(settings.invert);
    bytes.push_back(0);
    return bytes;
}

Extract::Settings randomSettings(Random& random) {
    const auto high = static_cast<std::uint16_t>(random() % 256);
    return {static_cast<std::uint16_t>(random() % (high + 1u)), high,
            static_cast<std::uint16_t>(random() % 101), static_cast<std::uint8_t>(random() % 2)};
}

TEST(ExtractCurve, WorkedEntries) {
    const auto defaults = Extract::transferCurve({64, 192, 25, 0});
    const struct {
        std::size_t entry;
        int value;
    } cases[] = {{47, 0},    {48, 0},    {49, 7},    {79, 247}, {80, 255},
                 {175, 255}, {176, 255}, {177, 247}, {207, 7},  {208, 0}};
    for (const auto& example : cases) EXPECT_EQ(defaults[example.entry], example.value) << example.entry;

    // A ramp cut off at the end of the scale begins part-way.
    EXPECT_EQ(Extract::transferCurve({0, 255, 100, 0})[0], 0);
    EXPECT_EQ(Extract::transferCurve({0, 255, 100, 0})[126], 126);
    EXPECT_EQ(Extract::transferCurve({0, 255, 100, 0})[128], 127);

    EXPECT_EQ(Extract::transferCurve({10, 20, 0, 0})[20], 0) << "a hard key excludes its upper end";
    EXPECT_EQ(Extract::transferCurve({77, 77, 100, 0}), TransferCurve{});
}

TEST(ExtractCurve, EqualsThePlainVersionInRangeAndSurvivesTheRest) {
    Random random(30);
    for (int turn = 0; turn < 2000; ++turn) {
        const auto settings = randomSettings(random);
        const auto curve = Extract::transferCurve(settings);
        for (int entry = 0; entry < 256; ++entry) {
            ASSERT_EQ(curve[static_cast<std::size_t>(entry)], curveAt(entry, settings))
                << settings.low << ' ' << settings.high << ' ' << settings.softness << " at " << entry;
        }
        const auto word = [&] {
            return static_cast<std::uint16_t>(random() % 3 == 0 ? random() : random() % 300);
        };
        Extract::transferCurve({word(), word(), word(), 0});
    }
}

TEST(Extract, EqualsThePlainVersionOnAnyFrame) {
    Random random(31);
    FilterUnderTest filter(extractId);
    for (const Geometry& geometry : awkwardGeometries()) {
        TestFrame source(geometry, random);
        const auto check = [&](const Extract::Settings& settings) {
            Picture expected = source.picture();
            const TransferCurve curve = Extract::transferCurve(settings);
            for (std::uint32_t& pixel : expected.pixels) pixel = matte(pixel, curve);
            EXPECT_TRUE(samePicture(expected, filter.rendered(source))) << geometry;
        };
        filter.dropSettings();
        check({64, 192, 25, 0});
        const auto settings = randomSettings(random);
        filter.setSettings(stored(settings));
        check(settings);
    }
}

TEST(Extract, WritesNothingOutsideTheDestination) {
    Random random(32);
    TestFrame source({.width = 40, .height = 30}, random);
    TestFrame destination({.width = 7, .height = 3});
    FilterUnderTest filter(extractId);
    for (const std::int32_t rowBytes : {160, 0, 3, -160, INT32_MIN, INT32_MAX}) {
        source.handle()->rowBytes = rowBytes;
        filter.render(source, destination);
        EXPECT_TRUE(destination.outerGuardsHold()) << rowBytes;
    }
}

TEST(ExtractKernels, EverySetEqualsThePlainVersion) {
    Random random(33);
    TransferCurve curve;
    for (std::uint8_t& value : curve) value = static_cast<std::uint8_t>(random());
    expectRowsEqualPlain(
        random, [&](auto set, auto... row) { extractKernelsTables.at(set).row(row..., curve); },
        [&](std::uint32_t pixel) { return matte(pixel, curve); });
    for (const auto set : runnableInstructionSets()) {
        for (const int width : {511, 512, 640, 2048 + 77}) {
            TestFrame frame({.width = width, .height = 1}, random);
            Picture expected = frame.picture();
            for (std::uint32_t& pixel : expected.pixels) pixel = matte(pixel, curve);
            extractKernelsTables.at(set).row(frame.row(0), frame.row(0), width, curve);
            EXPECT_TRUE(samePicture(expected, frame.picture())) << instructionSetName(set);
        }
    }
}

}  // namespace
