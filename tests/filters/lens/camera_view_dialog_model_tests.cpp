// SPDX-License-Identifier: MIT
#include "filters/lens/camera_view_dialog_model.h"

#include <gtest/gtest.h>

namespace {

using namespace CameraView;

DialogModel freshModel() {
    DialogModel model(initialSettings);
    model.layOut(boxAt(270, 20, 86, 72), boxAt(310, 250, 36, 20), boxAt(222, 4, 184, 224));
    return model;
}

TEST(CameraViewDialogModel, ThePreviewStandsBelowTheSampleInItsGroup) {
    const DialogModel model = freshModel();
    EXPECT_EQ(model.preview().left, 222 + (184 - 160) / 2);
    EXPECT_EQ(model.preview().top, 92 + (228 - 92 - 120) / 2);
    EXPECT_EQ(model.preview().width(), 160);
    EXPECT_EQ(model.sample().left, 271);
    EXPECT_EQ(model.sample().bottom, 91);
}

TEST(CameraViewDialogModel, ThePreviewIsRenderedForNewPositionsAlone) {
    DialogModel model = freshModel();
    EXPECT_TRUE(model.takePositions({0, 0, 0, 500, 1, 100}));
    EXPECT_FALSE(model.takePositions({0, 0, 0, 500, 1, 100}));
    model.redraw();
    EXPECT_TRUE(model.takePositions({0, 0, 0, 500, 1, 100}));
    EXPECT_FALSE(model.takePositions({0, 0, 0, 500, 1, 100}));
    EXPECT_TRUE(model.takePositions({0, 90, 0, 500, 1, 100}));
    EXPECT_EQ(model.settings().latitude, 90);
}

TEST(CameraViewDialogModel, ResettingBringsTheFreshFilterBackAndLeavesTheAreas) {
    DialogModel model = freshModel();
    model.takePositions({10, 20, 30, 40, 50, 60});
    model.fillWith(0x00102030);
    model.fillAlphaChannel(!model.fillsAlphaChannel());
    EXPECT_EQ(model.fillColor(), 0x00102030U);
    EXPECT_EQ(model.valueOf(Roll), 30);
    model.reset();
    const DialogModel fresh(initialSettings);
    for (std::size_t row = 0; row < rows.size(); ++row)
        EXPECT_EQ(model.valueOf(static_cast<Row>(row)), fresh.valueOf(static_cast<Row>(row))) << row;
    EXPECT_EQ(model.fillColor(), fresh.fillColor());
    EXPECT_EQ(model.fillsAlphaChannel(), fresh.fillsAlphaChannel());
    EXPECT_EQ(model.swatch(), boxAt(310, 250, 36, 20));
}

TEST(CameraViewDialogModel, WhatTheDialogWritesItselfIsNotTyped) {
    DialogModel model = freshModel();
    EXPECT_FALSE(model.isWriting());
    {
        const DialogModel::OwnWriting outer(model);
        { const DialogModel::OwnWriting inner(model); }
        EXPECT_TRUE(model.isWriting()) << "until the outermost ends";
        model.write(Zoom, 100);
    }
    EXPECT_FALSE(model.isWriting());
    EXPECT_EQ(model.written(Zoom), 100);
}

TEST(CameraViewDialogModel, EditRules) {
    EXPECT_EQ(DialogModel::editAngle(361).slider, 360);
    EXPECT_EQ(DialogModel::editAngle(361).writeBack, 360);
    EXPECT_EQ(DialogModel::editAngle(-1).writeBack, 0);
    EXPECT_EQ(DialogModel::editAngle(360).writeBack, std::nullopt);

    DialogModel model = freshModel();
    EXPECT_EQ(model.editLength(FocalLength, 1000).slider, 1000);
    EXPECT_EQ(model.editLength(FocalLength, 1001).slider, std::nullopt);
    EXPECT_EQ(model.editLength(Distance, 501).slider, std::nullopt);
    EXPECT_EQ(model.editLength(Distance, std::nullopt).slider, std::nullopt);
    model.write(Distance, 5);
    EXPECT_EQ(model.editLength(Distance, 5).slider, std::nullopt);

    EXPECT_EQ(DialogModel::editZoom(100, 1.15).slider, 114);  // Truncated, not rounded.
    EXPECT_EQ(DialogModel::editZoom(100, 6.28).slider, 628);
    EXPECT_EQ(DialogModel::editZoom(100, 1).slider, std::nullopt);
    for (const double refused : {6.3, -0.01, 1e30}) {
        EXPECT_TRUE(DialogModel::editZoom(100, refused).beep) << refused;
        EXPECT_EQ(DialogModel::editZoom(100, refused).writeBack, 100) << refused;
    }
}

TEST(CameraViewDialogModel, ASampledPointIsTheSourcesUnderThePointer) {
    const DialogModel model = freshModel();
    const FrameRect source{10, 20, 850, 720};  // 10 pixels to each of the area's 84 x 70.
    const auto first = model.sampledPoint(271, 21, source);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->x, 10);
    EXPECT_EQ(first->y, 20);
    const auto last = model.sampledPoint(354, 90, source);
    ASSERT_TRUE(last);
    EXPECT_EQ(last->x, 840);
    EXPECT_EQ(last->y, 710);
    EXPECT_FALSE(model.sampledPoint(355, 50, source));
    EXPECT_FALSE(model.sampledPoint(300, 20, source));
    EXPECT_EQ(colorOfPixel(0x80102030), 0x00302010U);
}

}  // namespace
