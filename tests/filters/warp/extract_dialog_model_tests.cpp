// SPDX-License-Identifier: MIT
#include "filters/warp/extract_dialog_model.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace {

using Extract::Field;

Extract::DialogModel modelWithLine(const Extract::Settings& settings) {
    Extract::DialogModel model(settings);
    model.layOut(boxAt(20, 100, 192, 1), boxAt(20, 30, 192, 70), boxAt(0, 0, 434, 265));
    return model;
}

TEST(ExtractDialogModel, PreviewStandsBesideTheHistogram) {
    EXPECT_EQ(modelWithLine({}).preview(), boxAt(212 + (434 - 212 - 160) / 2, 30, 160, 120));
}

TEST(ExtractDialogModel, DraggingCoversTheWholeRangeAndStopsAtTheOtherHandle) {
    auto model = modelWithLine({0, 255, 0, 0});
    model.press(20, 104);
    unsigned redrawn = 0;
    for (int x = 20, last = -1; x < 240; ++x) {
        redrawn |= model.drag(x);
        EXPECT_GE(model.settings().low, last);
        last = model.settings().low;
    }
    EXPECT_EQ(redrawn, Extract::Low | Extract::Picture);
    EXPECT_EQ(model.settings().low, 255);
    EXPECT_EQ(model.drag(300), Extract::Nothing);
    model.drag(-100);
    EXPECT_EQ(model.settings().low, 0);

    model.press(5, 5);
    EXPECT_EQ(model.drag(100), Extract::Nothing);

    auto upper = modelWithLine({40, 255, 0, 0});
    const Box marker = upper.strip().marker(255);
    upper.press(marker.left, marker.top);
    EXPECT_EQ(upper.drag(-100), Extract::High | Extract::Picture);
    EXPECT_EQ(upper.settings().high, 40);
}

TEST(ExtractDialogModel, TypedValuesKeepTheirRanges) {
    Extract::DialogModel model({50, 100, 5, 1});
    for (const auto& [field, typed] : {std::pair(Field::Low, 101),
                                       {Field::Low, -1},
                                       {Field::High, 49},
                                       {Field::High, 256},
                                       {Field::Softness, 101}}) {
        const int before = model.valueOf(field);
        EXPECT_TRUE(model.commit(field, typed).refused) << typed;
        EXPECT_EQ(model.valueOf(field), before);
    }
    EXPECT_TRUE(model.commit(Field::Low, std::nullopt).refused);
    EXPECT_EQ(model.commit(Field::Low, 100).redraw, Extract::Low | Extract::Picture);
    EXPECT_EQ(model.commit(Field::High, 100).redraw, Extract::Nothing);
    EXPECT_EQ(model.commit(Field::Softness, 100).redraw, Extract::Softness | Extract::Picture);
    EXPECT_EQ(model.slideSoftness(100), Extract::Nothing);
    EXPECT_EQ(model.slideSoftness(7), Extract::Softness | Extract::Picture);
    EXPECT_EQ(model.settings().softness, 7);
    for (const int inverted : {0, 1}) {
        EXPECT_EQ(model.toggleInvert(), Extract::Picture);
        EXPECT_EQ(model.settings().invert, inverted);
    }
}

TEST(ExtractDialogModel, AHandleStaysUnderThePointerThatGrabbedItsEdge) {
    auto model = modelWithLine({100, 200, 0, 0});
    const Box marker = model.strip().marker(100);
    model.press(marker.right - 1, marker.top);
    EXPECT_EQ(model.drag(marker.right - 1), Extract::Nothing);
    EXPECT_EQ(model.settings().low, 100);
}

TEST(ExtractDialogModel, BarsFollowTheCountsAndLeaveTheFrameFromManyPixelsOn) {
    auto model = modelWithLine({});
    constexpr int white = 100;
    std::vector<std::uint8_t> pixels(std::size_t{4} * 66000, 0);
    std::fill_n(pixels.begin(), 4 * white, 255);
    const auto count = [&](int black) { model.countPixels({pixels.data(), 0, {0, 0, white + black, 1}}); };
    const Box box = boxAt(0, 0, 192, 70);

    count(200);
    EXPECT_EQ(model.histogramBar(box, 0).height(), 70);
    EXPECT_EQ(model.histogramBar(box, 254).height(), 35);
    EXPECT_EQ(model.histogramBar(box, 255), (Box{192, 70, 193, 70}));
    count(65536);
    EXPECT_EQ(model.histogramBar(box, 254).height(), 0);
    count(65537);
    EXPECT_EQ(model.histogramBar(box, 254).height(), 70 * white);
    model.countPixels({nullptr, 0, {}});
    EXPECT_EQ(model.histogramBar(box, 0).height(), 0);
}

TEST(ExtractDialogModel, TheCurveFillsItsBoxFromEndToEnd) {
    TransferCurve curve{};
    curve[255] = 255;
    curve[128] = 128;
    const Box box = boxAt(10, 20, 256, 51);
    EXPECT_EQ(Extract::DialogModel::curveColumn(box, curve, 0), (Box{10, 71, 11, 71}));
    EXPECT_EQ(Extract::DialogModel::curveColumn(box, curve, 128).height(), 26);
    EXPECT_EQ(Extract::DialogModel::curveColumn(box, curve, 255).top, 20);
}

}  // namespace
