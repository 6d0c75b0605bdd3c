// SPDX-License-Identifier: MIT
// The dialogs whose rules are few.
#include "filters/color/horizontal_hold_dialog_model.h"
#include "filters/warp/bend_dialog_model.h"
#include "filters/warp/camera_blur_dialog_model.h"
#include "framework/dialog_numbers.h"
#include "host/vireo_host.h"

#include <gtest/gtest.h>

namespace {

TEST(HorizontalHoldDialogModel, ShowsTheOffsetAndStoresOneValueForBothEnds) {
    const struct {
        HorizontalHold::Settings before;
        int position, moved, after;
    } cases[] = {
        {{0, 0}, 127, 135, 65536},
        {{-65536, 3}, 119, 126, -8192},
        {{1 << 24, 0}, 127 + 2048, 255, 128 << 13},  // Beyond the slider's end.
        {{8191, -8191}, 127, 0, -(127 << 13)},
        {{-8191, 0}, 127, 127, 0},
        {{INT32_MIN, 0}, 127 - 262144, 127, 0},
    };
    for (const auto& example : cases) {
        HorizontalHold::DialogModel model(example.before);
        EXPECT_EQ(model.position(), example.position);
        EXPECT_EQ(model.settings().endStep, example.before.endStep) << "until the slider is read";
        model.slide(example.moved);
        EXPECT_EQ(model.settings().offset, example.after);
        EXPECT_EQ(model.settings().endStep, example.after);
    }
}

TEST(CameraBlurDialogModel, ShowsTheAmountAndStoresTheSlider) {
    CameraBlur::DialogModel model({60});
    EXPECT_EQ(model.readOut(), L"60%");
    model.slide(CameraBlur::DialogModel::largestAmount);
    EXPECT_EQ(model.readOut(), L"100%");
    EXPECT_EQ(model.settings().amount, 100);
}

TEST(BendDialogModel, KeepsTheFillColorAndCountsItsPictures) {
    const Bend::AxisSettings left{1, 2, 20, 5, 60}, right{3, 1, 7, 16, 3};
    Bend::DialogModel model({left, right, 0x00123456});
    model.choose(right, left);
    EXPECT_EQ(model.settings().horizontal.direction, right.direction);
    EXPECT_EQ(model.settings().vertical.wave, left.wave);
    EXPECT_EQ(model.settings().fillColor, 0x00123456U);
    for (int step = 0; step < 3; ++step) EXPECT_EQ(model.nextStep(), step);
}

TEST(BendDialogModel, ReadsListsWithEitherEndAndWithoutOne) {
    using Keys = std::vector<std::string>;
    const auto keysOf = [](std::string_view bytes) { return Bend::listKeys(bytes); };
    EXPECT_EQ(keysOf({"Left=a\0Right\rUp\0\0Down\0", 22}), (Keys{"Left=a", "Right", "Up"}));
    EXPECT_EQ(keysOf("Sine"), Keys{"Sine"});
    EXPECT_EQ(keysOf({"\0Sine", 5}), Keys());
    EXPECT_EQ(keysOf({}), Keys());
    EXPECT_EQ(Bend::listItem(u"10\\0\\0"), u"1");
    EXPECT_EQ(Bend::listItem(u"Welle"), u"Welle");
    EXPECT_EQ(Bend::listItem(u"0"), u"");
}

TEST(DialogNumbers, AreWrittenAsTheHostsLanguageDoes) {
    vireoHostSetLanguage(0x0407);
    EXPECT_EQ(FormatDialogNumber(1.5, true, 2), u"1,50");
    EXPECT_EQ(FormatDialogNumber(1234.5, true, 0), u"1234") << "as streams round, to the even";
    EXPECT_EQ(FormatDialogNumber(2.25, false, 0), u"2,25");
    vireoHostSetLanguage(0x0409);
    EXPECT_EQ(FormatDialogNumber(-100, false, 0), u"-100");
}

TEST(DialogModels, PreviewsStandInTheMiddle) {
    const Box client = boxAt(0, 0, 400, 300), slider = boxAt(100, 240, 280, 20);
    HorizontalHold::DialogModel hold({});
    hold.layOut(client, slider);
    EXPECT_EQ(hold.preview(), boxAt(120, 30, 240, 180));
    CameraBlur::DialogModel blur({});
    blur.layOut(client, slider);
    EXPECT_EQ(blur.preview(), boxAt(80, 30, 240, 180));
    EXPECT_EQ(Bend::DialogModel::preview(boxAt(10, 20, 200, 160)), boxAt(30, 40, 160, 120));
}

}  // namespace
