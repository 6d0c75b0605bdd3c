// SPDX-License-Identifier: MIT
#include "host/pixkit/pixkit.h"
#include "tests/support/filter_under_test.h"

namespace {

constexpr std::uint32_t ghostingId = 10029;

/// A clip whose every frame is random, and what was asked of it.
struct Clip {
    Geometry geometry;
    std::vector<std::uint32_t> times;

    Picture at(std::uint32_t time) const {
        Random random(time + 17);
        return TestFrame(geometry, random).picture();
    }

    static std::int32_t getFrame(std::uint32_t time, FrameBuffer* target, const FrameRect* bounds,
                                 void* data) {
        auto& clip = *static_cast<Clip*>(data);
        clip.times.push_back(time);
        TestFrame frame(clip.geometry, clip.at(time));
        vpixCopy(frame.handle(), target, bounds, bounds, VPixCopyReplace);
        return -1;  // Nobody looks at it.
    }
};

Picture blended(const Picture& over, Picture under, int weight) {
    for (std::size_t i = 0; i < under.pixels.size(); ++i) {
        int channels[4];
        for (int c = 0; c < 4; ++c) {
            channels[c] = (channelOf(over.pixels[i], c) * weight +
                           channelOf(under.pixels[i], c) * (255 - weight) + 127) /
                          255;
        }
        under.pixels[i] = pixelOf(channels[0], channels[1], channels[2], channels[3]);
    }
    return under;
}

class GhostingTest : public testing::Test {
protected:
    GhostingTest() {
        filter.invocation.getFrameCallback = Clip::getFrame;
        filter.invocation.frameCallbackData = &clip;
    }

    Clip clip{{.width = 23, .height = 9, .padding = 4, .left = -3, .top = 5}, {}};
    FilterUnderTest filter{ghostingId};
    Random random{1};
    TestFrame source{clip.geometry, random};
};

TEST_F(GhostingTest, LaysThreeMomentsOverOneAnother) {
    filter.invocation.frameTime = 100;
    const Picture twoLayers = blended(source.picture(), clip.at(96), 187);
    EXPECT_TRUE(samePicture(blended(clip.at(92), twoLayers, 68), filter.rendered(source)));
}

TEST_F(GhostingTest, BlendsEveryRowOfLargeFrames) {
    clip.geometry = {.width = 700, .height = 151, .left = 3, .top = -40};
    TestFrame large(clip.geometry, random);
    filter.invocation.frameTime = 100;
    const Picture twoLayers = blended(large.picture(), clip.at(96), 187);
    EXPECT_TRUE(samePicture(blended(clip.at(92), twoLayers, 68), filter.rendered(large)));
}

TEST_F(GhostingTest, AsksForTimesInSteps) {
    const struct {
        std::uint16_t fieldFlags;
        std::uint32_t fieldDuration, time, earlier, oldest;
    } cases[] = {
        {0, 1, 100, 96, 92},
        {0x0100, 1, 100, 92, 84},
        {0x0200, 10, 200, 120, 40},
        {0x0C00, 10, 200, 160, 120},
        {0, 1, 7, 3, 0},
        {0, 1, 3, 0, 0},
        {0, 0, 9, 9, 9},
        {0, 1, 0x80000001, 0x7FFFFFFD, 0x7FFFFFF9},
        {0, 1, 0x80000010, 0, 0},    // Differences from 2^31 on are negative.
        {0, 0x40000000, 5, 5, 5},    // Steps are 32 bits wide,
        {0, 0x20000001, 20, 0, 12},  // twice the step as well.
    };
    for (const auto& example : cases) {
        const TimeBase timeBase{{}, example.fieldDuration};
        filter.invocation.timeBase = &timeBase;
        filter.invocation.fieldFlags = example.fieldFlags;
        filter.invocation.frameTime = example.time;
        clip.times.clear();
        filter.rendered(source);
        EXPECT_EQ(clip.times, (std::vector<std::uint32_t>{example.earlier, example.oldest}))
            << "time " << example.time << ", field " << example.fieldDuration;
    }
}

TEST_F(GhostingTest, CopiesWhereTheHostHasNoOtherFrames) {
    filter.invocation.getFrameCallback = nullptr;
    filter.invocation.frameTime = 100;
    EXPECT_TRUE(samePicture(source.picture(), filter.rendered(source)));
}

}  // namespace
