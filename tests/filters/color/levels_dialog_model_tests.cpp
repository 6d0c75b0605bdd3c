// SPDX-License-Identifier: MIT
#include "filters/color/levels_dialog_model.h"
#include "filters/color/levels_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

namespace {

using namespace Levels;

DialogModel laidOut(const Settings& settings = {}) {
    DialogModel model(settings);
    model.layOut(boxAt(30, 60, 216, 100), boxAt(30, 170, 216, 2), boxAt(30, 210, 216, 20),
                 boxAt(30, 14, 216, 20), boxAt(6, 2, 270, 255), boxAt(0, 0, 458, 263));
    return model;
}

void pressMarker(DialogModel& model, Value value) {
    const Box marker = model.strip(value).marker(model.markerValue(value));
    model.press(marker.left + 7, marker.top + 2);
}

TEST(LevelsDialogModel, PreviewStandsBesideTheGroup) {
    EXPECT_EQ(laidOut().preview(), boxAt(276 + (458 - 276 - 160) / 2, 14, 160, 120));
}

TEST(LevelsDialogModel, InputMarkersStopAtEachOtherAndMoveTheGammaMarker) {
    DialogModel model = laidOut();
    pressMarker(model, InputWhite);
    EXPECT_EQ(model.drag(180), InputWhite | Gamma);
    const int white = model.shown(InputWhite);
    EXPECT_NEAR(white, 177, 1);
    pressMarker(model, InputBlack);
    model.drag(400);
    EXPECT_EQ(model.shown(InputBlack), white);
    model.drag(-50);
    EXPECT_EQ(model.shown(InputBlack), 0);
    EXPECT_EQ(model.drag(-60), 0U);

    model.drag(100);
    const int black = model.shown(InputBlack);
    EXPECT_GT(black, 0);
    pressMarker(model, InputWhite);
    model.drag(-50);
    EXPECT_EQ(model.shown(InputWhite), black);
    model.drag(400);
    EXPECT_EQ(model.shown(InputWhite), 255);
}

TEST(LevelsDialogModel, MarkersStackedAtZeroArePulledApart) {
    DialogModel model = laidOut({.master = {.inputWhite = 0}});
    pressMarker(model, InputBlack);
    model.drag(200);
    EXPECT_EQ(model.shown(InputBlack), 0);
    EXPECT_GT(model.shown(InputWhite), 150);
}

TEST(LevelsDialogModel, OutputMarkersMayCross) {
    DialogModel model = laidOut();
    pressMarker(model, OutputBlack);
    EXPECT_EQ(model.drag(1000), OutputBlack);
    EXPECT_EQ(model.shown(OutputBlack), 255);
}

TEST(LevelsDialogModel, TheGammaMarkerIsALogarithmAndItsEndsNearTenthAndTen) {
    DialogModel model = laidOut();
    EXPECT_EQ(model.markerValue(Gamma), 127);
    pressMarker(model, Gamma);
    EXPECT_EQ(model.drag(-100), Gamma);
    EXPECT_NEAR(model.shown(Gamma), 997, 15);
    model.drag(1000);
    EXPECT_EQ(model.shown(Gamma), 10);

    // Between two neighbouring points there is no room for it.
    DialogModel tight = laidOut({.master = {.inputBlack = 100, .inputWhite = 101}});
    const Box marker = tight.strip(Gamma).marker(tight.markerValue(Gamma));
    tight.press(marker.right - 1, marker.top);
    tight.drag(-20);
    EXPECT_EQ(tight.shown(Gamma), 100);

    EXPECT_NO_FATAL_FAILURE(laidOut({.master = {.gamma = 0}}).markerValue(Gamma));
}

TEST(LevelsDialogModel, TypedValuesKeepTheirRanges) {
    DialogModel model({.master = {.inputBlack = 20, .inputWhite = 200}});
    for (const auto& [value, typed] : {std::pair(InputBlack, 201),
                                       {InputBlack, -1},
                                       {InputWhite, 19},
                                       {InputWhite, 256},
                                       {OutputBlack, 256},
                                       {OutputWhite, -1},
                                       {Gamma, 9},
                                       {Gamma, 1000}}) {
        const int before = model.shown(value);
        EXPECT_TRUE(model.commit(value, typed).refused) << value << ' ' << typed;
        EXPECT_EQ(model.shown(value), before);
    }
    EXPECT_TRUE(model.commit(Gamma, std::nullopt).refused);
    EXPECT_EQ(model.commit(InputBlack, 200).changed, InputBlack | Gamma);
    EXPECT_EQ(model.commit(InputBlack, 200).changed, 0U);
    EXPECT_EQ(model.commit(Gamma, 999).changed, Gamma);
}

TEST(LevelsDialogModel, EachChannelHasItsOwnValuesAndHistogram) {
    DialogModel model = laidOut();
    const std::uint8_t pixels[] = {10, 20, 30, 0, 10, 20, 31, 0, 10, 21, 32, 0};
    model.countPixels({const_cast<std::uint8_t*>(pixels), 12, {0, 0, 3, 1}});
    const Box box = boxAt(0, 0, 255, 60);
    EXPECT_EQ(model.histogramBar(box, 10).height(), 0);
    EXPECT_FALSE(model.chooseChannel(0));
    EXPECT_FALSE(model.chooseChannel(-1));
    EXPECT_TRUE(model.chooseChannel(3));
    EXPECT_EQ(model.histogramBar(box, 10).height(), 60);
    model.commit(OutputWhite, 7);
    EXPECT_TRUE(model.chooseChannel(2));
    EXPECT_EQ(model.shown(OutputWhite), 255);
    EXPECT_EQ(model.histogramBar(box, 21).height(), 30);
    EXPECT_EQ(model.settings().blue.outputWhite, 7);

    EXPECT_TRUE(model.chooseChannel(1));
    model.commit(OutputWhite, 9);
    EXPECT_EQ(model.settings().red.outputWhite, 9);
    model.load({});
    EXPECT_EQ(model.channel(), 1);
    EXPECT_EQ(model.shown(OutputWhite), 255);
    EXPECT_EQ(model.settings().blue.outputWhite, 255);
}

class LevelsFile : public testing::Test {
protected:
    // The program runs several times at once, once for each instruction set.
    const std::filesystem::path path = [] {
        auto file = std::filesystem::temp_directory_path() / u"vireo_levels_é";
        return file += std::to_string(std::random_device()()) + ".lvl";
    }();

    ~LevelsFile() override { std::filesystem::remove(path); }

    bool loads(const std::string& bytes, Settings& settings) const {
        std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return loadFile(path.u16string(), settings);
    }
};

TEST_F(LevelsFile, KeepsAnyValuesInFortyFourBytes) {
    Settings settings;
    settings.red.gamma = -5;
    settings.blue.inputWhite = 30000;
    ASSERT_TRUE(saveFile(path.u16string(), settings));
    std::ifstream file(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    file.close();
    EXPECT_EQ(bytes.substr(0, 4), std::string("L\0V\0", 4));
    EXPECT_EQ(bytes.size(), 44U);
    Settings read;
    EXPECT_TRUE(loads(bytes + "more", read));
    EXPECT_EQ(read.red, settings.red);
    EXPECT_EQ(read.blue, settings.blue);
}

TEST_F(LevelsFile, RefusesOthers) {
    const std::string values(40, '\1');
    Settings settings;
    EXPECT_FALSE(loads(std::string("L\0V\0", 4) + values.substr(1), settings));
    EXPECT_FALSE(loads("LVL" + values, settings));
    EXPECT_FALSE(loads("", settings));
    EXPECT_FALSE(loads(std::string("L\0V\0", 4), settings));
    std::filesystem::remove(path);
    EXPECT_FALSE(loadFile(path.u16string(), settings));
    EXPECT_FALSE(saveFile((path / "in_no_folder.lvl").u16string(), settings));
}

}  // namespace
