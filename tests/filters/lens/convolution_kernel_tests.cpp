// SPDX-License-Identifier: MIT
#include "tests/filters/plain_filter.h"

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
    expectEqualsPlain(convolutionKernelId, [](FilterUnderTest& filter, Picture& source, Random& random) {
        Values values{{1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}, 0};
        if (random() % 8 == 0) {
            // Without settings, where the sum of bright pixels would be white.
            for (std::uint32_t& pixel : source.pixels) pixel &= 0xFF1F1F1F;
        } else {
            for (auto& value : values.record) value = static_cast<std::int16_t>(random() % 61 - 30);
            values.processAlpha = static_cast<std::uint8_t>(random() % 3);
            filter.setSettings(values.bytes());
        }
        return [values](TestFrame& frame) { return convolved(frame.picture(), values); };
    });
}

}  // namespace
