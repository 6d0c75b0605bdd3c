// SPDX-License-Identifier: MIT
#include "app/render/comparison.h"
#include "tests/engine/support/fake_filters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>

namespace vireo {
namespace {

constexpr int width = 6, height = 4, line = 4;

/// Makes every pixel of a frame the last one of its row.
class Smear : public FrameProcessor {
public:
    int lookBack() const override { return 3; }
    std::uint32_t sourceFormat(int sourceDepth) const override {
        return sourceDepth > 8 ? formatBgra16 : PixKit::formatBgra;
    }
    PicturePtr process(const PicturePtr& source, const FramePosition&, const SourceHistory&) override {
        const auto result = std::make_shared<Picture>(source->width(), source->height(), source->format());
        const int bytes = PixKit::bytesPerPixel(source->format());
        for (int y = 0; y < source->height(); ++y) {
            for (int x = 0; x < source->width(); ++x) {
                const std::uint8_t* last = source->row(y) + bytes * (source->width() - 1);
                std::copy(last, last + bytes, result->row(y) + bytes * x);
            }
        }
        return result;
    }
};

template <class Channel>
Channel* pixel(const Picture& picture, int x, int y) {
    return reinterpret_cast<Channel*>(const_cast<Picture&>(picture).row(y)) + 4 * x;
}

/// Rows and columns that differ, the left column half transparent.
template <class Channel>
PicturePtr gradient(std::uint32_t format, Channel one) {
    const auto picture = std::make_shared<Picture>(width, height, format);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            Channel* channels = pixel<Channel>(*picture, x, y);
            for (int i = 0; i < 3; ++i) channels[i] = static_cast<Channel>(one * (x + 7 * y) / 40);
            channels[3] = static_cast<Channel>(x == 0 ? one / 2 : one);
        }
    }
    return picture;
}

template <class Channel>
void expectBothHalves(std::uint32_t format, Channel one) {
    const PicturePtr source = gradient<Channel>(format, one);
    const test::Clip clip({source});
    Smear smear;
    for (const bool keepAlpha : {false, true}) {
        Comparison comparison(smear, {Layout::Beside, keepAlpha});
        const PicturePtr both = comparison.process(source, {}, clip);
        ASSERT_EQ(both->format(), format);
        ASSERT_EQ(both->width(), 2 * width + line);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const Channel* before = pixel<Channel>(*source, x, y);
                const Channel* shown = pixel<Channel>(*both, x, y);
                const Channel* after = pixel<Channel>(*both, width + line + x, y);
                EXPECT_EQ(after[0], pixel<Channel>(*source, width - 1, y)[0]);
                EXPECT_EQ(after[3], one);
                if (before[3] == one || keepAlpha) {
                    EXPECT_EQ(shown[0], before[0]);
                    EXPECT_EQ(shown[3], before[3]);
                    continue;
                }
                // Half the colour, half the square of grey behind it.
                const double behind = static_cast<double>(one) * (y / 4 % 2 == 0 ? 0.8 : 0.6);
                EXPECT_NEAR(static_cast<double>(shown[0]), (before[0] + behind) / 2, one > 1 ? 1.5 : 0.001);
                EXPECT_EQ(shown[3], one);
            }
        }
    }
}

TEST(Comparison, KeepsTheDepthOfTheChain) {
    expectBothHalves<std::uint8_t>(PixKit::formatBgra, 255);
    expectBothHalves<std::uint16_t>(formatBgra16, 65535);
    expectBothHalves<float>(formatBgraFloat, 1);
    Smear smear;
    const Comparison comparison(smear, {});
    EXPECT_EQ(comparison.sourceFormat(16), formatBgra16);
    EXPECT_EQ(comparison.lookBack(), 3);
}

}  // namespace
}  // namespace vireo
