// SPDX-License-Identifier: MIT
#include "filters/lens/camera_view_dialog_model.h"

#include <gtest/gtest.h>

namespace {

using namespace CameraView;

DialogState freshState() {
    DialogState state{};
    reset(state);
    forgetShown(state);
    layOut(state, boxAt(270, 20, 86, 72), boxAt(310, 250, 36, 20), boxAt(222, 4, 184, 224));
    return state;
}

TEST(CameraViewDialogModel, ThePreviewStandsBelowTheSampleInItsGroup) {
    const DialogState state = freshState();
    EXPECT_EQ(state.previewRect.left, 222 + (184 - 160) / 2);
    EXPECT_EQ(state.previewRect.top, 92 + (228 - 92 - 120) / 2);
    EXPECT_EQ(state.previewRect.right - state.previewRect.left, 160);
    EXPECT_EQ(state.sampleRect.left, 271);
    EXPECT_EQ(state.sampleRect.bottom, 91);
}

TEST(CameraViewDialogModel, ThePreviewIsRenderedForNewPositionsAlone) {
    DialogState state = freshState();
    EXPECT_TRUE(takePositions(state, {0, 0, 0, 500, 1, 100}));
    EXPECT_FALSE(takePositions(state, {0, 0, 0, 500, 1, 100}));
    state.redraw = 1;
    EXPECT_TRUE(takePositions(state, {0, 0, 0, 500, 1, 100}));
    EXPECT_FALSE(takePositions(state, {0, 0, 0, 500, 1, 100}));
    EXPECT_TRUE(takePositions(state, {0, 90, 0, 500, 1, 100}));
    EXPECT_EQ(settingsOf(state).latitude, 90);
}

TEST(CameraViewDialogModel, EditRules) {
    EXPECT_EQ(editAngle(361).slider, 360);
    EXPECT_EQ(editAngle(361).writeBack, 360);
    EXPECT_EQ(editAngle(-1).writeBack, 0);
    EXPECT_EQ(editAngle(360).writeBack, std::nullopt);

    DialogState state = freshState();
    EXPECT_EQ(editLength(state, FocalLength, 1000).slider, 1000);
    EXPECT_EQ(editLength(state, FocalLength, 1001).slider, std::nullopt);
    EXPECT_EQ(editLength(state, Distance, 501).slider, std::nullopt);
    EXPECT_EQ(editLength(state, Distance, std::nullopt).slider, std::nullopt);
    state.shown[Distance].written = 5;
    EXPECT_EQ(editLength(state, Distance, 5).slider, std::nullopt);

    EXPECT_EQ(editZoom(100, 1.15).slider, 114);  // Truncated, not rounded.
    EXPECT_EQ(editZoom(100, 6.28).slider, 628);
    EXPECT_EQ(editZoom(100, 1).slider, std::nullopt);
    for (const double refused : {6.3, -0.01, 1e30}) {
        EXPECT_TRUE(editZoom(100, refused).beep) << refused;
        EXPECT_EQ(editZoom(100, refused).writeBack, 100) << refused;
    }
}

TEST(CameraViewDialogModel, ASampledPointIsTheSourcesUnderThePointer) {
    const DialogState state = freshState();
    const FrameRect source{10, 20, 850, 720};  // 10 pixels to each of the area's 84 x 70.
    const auto first = sampledPoint(state, 271, 21, source);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->x, 10);
    EXPECT_EQ(first->y, 20);
    const auto last = sampledPoint(state, 354, 90, source);
    ASSERT_TRUE(last);
    EXPECT_EQ(last->x, 840);
    EXPECT_EQ(last->y, 710);
    EXPECT_FALSE(sampledPoint(state, 355, 50, source));
    EXPECT_FALSE(sampledPoint(state, 300, 20, source));
    EXPECT_EQ(colorOfPixel(0x80102030), 0x00302010U);
}

}  // namespace
