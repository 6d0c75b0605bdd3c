// SPDX-License-Identifier: MIT
#include "filters/lens/convolution_kernel_kernels.h"
#include "tests/support/filter_under_test.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::uint32_t convolutionKernelId = 10017;

struct Values {
    std::array<std::int16_t, 11> record;
    std::uint8_t processAlpha;

    std::vector<std::uint8_t> bytes() const {
        std::vector<std::uint8_t> packed(23);
        std::memcpy(packed.data(), record.data(), 22);
        packed[22] = processAlpha;
        return packed;
    }
};

Picture convolved(const Picture& source, const Values& values) {
    Picture result{source.width, source.height};
    const int scale = values.record[10] == 0 ? 1 : values.record[10];
    for (int y = 0; y < source.height; ++y) {
        for (int x = 0; x < source.width; ++x) {
            int channels[4];
            for (int channel = 0; channel < 4; ++channel) {
                int sum = 0;
                for (int i = 0; i < 9; ++i) {
                    // The kernel's first row meets the picture row above, which is the next in memory.
                    const int fromX = std::clamp(x + i % 3 - 1, 0, source.width - 1);
                    const int fromY = std::clamp(y + 1 - i / 3, 0, source.height - 1);
                    sum += values.record[static_cast<std::size_t>(i)] *
                           channelOf(source.at(fromX, fromY), channel);
                }
                channels[channel] = std::clamp(sum / scale + values.record[9], 0, 255);
            }
            if (values.processAlpha == 0) channels[3] = channelOf(source.at(x, y), 3);
            result.at(x, y) = pixelOf(channels[0], channels[1], channels[2], channels[3]);
        }
    }
    return result;
}

TEST(ConvolutionKernel, EqualsThePlainVersionOnAnyFrame) {
    Random random(1);
    FilterUnderTest filter(convolutionKernelId);
    for (const Geometry& geometry : awkwardGeometries()) {
        TestFrame source(geometry, random);
        Values values{};
        for (auto& value : values.record) value = static_cast<std::int16_t>(random() % 61 - 30);
        values.processAlpha = static_cast<std::uint8_t>(random() % 3);
        filter.setSettings(values.bytes());
        EXPECT_TRUE(samePicture(convolved(source.picture(), values), filter.rendered(source))) << geometry;
    }
}

TEST(ConvolutionKernel, SumsTheNeighbourhoodWithoutSettings) {
    Random random(2);
    Picture dark{16, 9};
    for (auto& pixel : dark.pixels) pixel = static_cast<std::uint32_t>(random()) & 0xFF1F1F1F;
    TestFrame source({.width = 16, .height = 9}, dark);
    FilterUnderTest filter(convolutionKernelId);
    const Values ones{{1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}, 0};
    EXPECT_TRUE(samePicture(convolved(dark, ones), filter.rendered(source)));
}

TEST(ConvolutionKernel, WritesNothingOutsideTheDestination) {
    Random random(3);
    TestFrame source({.width = 40, .height = 30}, random);
    FilterUnderTest filter(convolutionKernelId);
    for (const Geometry& geometry : awkwardGeometries()) {
        TestFrame destination(geometry);
        filter.render(source, destination);
        EXPECT_TRUE(destination.guardsHold()) << geometry;
    }
}

TEST(ConvolutionKernelKernels, EverySetCopiesAlphaAlone) {
    Random random(4);
    for (const auto set : runnableInstructionSets()) {
        for (int width = 0; width < 140; ++width) {
            std::vector<std::uint8_t> from(4 * static_cast<std::size_t>(width) + 3), to(from.size() + 4);
            for (auto& byte : from) byte = static_cast<std::uint8_t>(random());
            for (auto& byte : to) byte = static_cast<std::uint8_t>(random());
            auto expected = to;
            for (std::size_t i = 3; i < static_cast<std::size_t>(4 * width); i += 4) {
                expected[i + 1] = from[i + 3];
            }
            convolutionKernelKernelsTables.at(set).copyAlpha(from.data() + 3, to.data() + 1, width);
            ASSERT_EQ(to, expected) << instructionSetName(set) << ", width " << width;
        }
    }
}

}  // namespace
