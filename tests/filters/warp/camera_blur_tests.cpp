// SPDX-License-Identifier: MIT
#include "host/fxkit/fxkit.h"
#include "tests/support/filter_under_test.h"

namespace {

constexpr std::uint32_t cameraBlurId = 10010;

Picture blurred(TestFrame& source, double rx, double ry) {
    TestFrame result(source.geometry());
    const FrameBuffer& from = *source.handle();
    FX_GaussianBlur(from.pixels, from.rowBytes, source.geometry().width, source.geometry().height, 4,
                    result.handle()->pixels, result.handle()->rowBytes, source.geometry().width,
                    source.geometry().height, 4, rx, ry, true, false, 3, 2);
    return result.picture();
}

TEST(CameraBlur, ReachesAShareOfEachSide) {
    Random random(50);
    const struct {
        int amount;  // Below 0: without settings.
        int width, height;
        double rx, ry;
    } cases[] = {{0, 40, 30, 0, 0},  {100, 72, 48, 7, 4}, {25, 39, 81, 0, 2},      {-1, 80, 41, 2, 1},
                 {100, 9, 10, 0, 1}, {50, 1, 400, 0, 20}, {65535, 40, 1, 2621, 65}};
    for (const auto& example : cases) {
        FilterUnderTest filter(cameraBlurId);
        if (example.amount >= 0) filter.setSettings({static_cast<std::uint16_t>(example.amount)});
        TestFrame source({.width = example.width, .height = example.height, .padding = 8}, random);
        EXPECT_TRUE(samePicture(blurred(source, example.rx, example.ry), filter.rendered(source)))
            << example.amount << " of " << example.width << " x " << example.height;
    }
}

}  // namespace
