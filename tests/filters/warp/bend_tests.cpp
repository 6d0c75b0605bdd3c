// SPDX-License-Identifier: MIT
#include "filters/warp/bend.h"
#include "host/pixkit/pixkit.h"
#include "tests/filters/plain_filter.h"

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

Bend::AxisSettings randomAxis(Random& random) {
    const auto below = [&](unsigned limit) { return static_cast<std::uint16_t>(random() % limit); };
    return {below(5), below(5), static_cast<std::int16_t>(below(31)), static_cast<std::int16_t>(below(17)),
            static_cast<std::int16_t>(below(91))};
}

TEST(Bend, EqualsThePlainVersionOnAnyFrame) {
    static const TimeBase timeBases[] = {{{}, 1}, {{}, 1001}};
    expectEqualsPlain(bendId, [](FilterUnderTest& filter, Picture&, Random& random) {
        Bend::Settings settings{defaultAxis, defaultAxis, 0x00FFFFFF};
        if (random() % 8 != 0) {
            settings = {randomAxis(random), randomAxis(random), static_cast<std::uint32_t>(random())};
            filter.setRecord(settings);
        }
        // Time runs in field durations.
        const TimeBase& timeBase = timeBases[random() % 2];
        const int duration = static_cast<int>(timeBase.fieldDuration);
        const int time = static_cast<int>(random() % (450u * duration)) - 50 * duration;
        filter.invocation.timeBase = &timeBase;
        filter.invocation.frameTime = static_cast<std::uint32_t>(time);
        return [settings, step = time / duration](TestFrame& source) { return bent(source, settings, step); };
    });
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

}  // namespace
