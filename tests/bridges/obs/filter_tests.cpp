// SPDX-License-Identifier: GPL-2.0-or-later
// The plug-in on libobs alone.
#include "tests/bridges/obs/studio.h"
#include "vireo/vireo.h"

#include <gmock/gmock.h>
#include <util/bmem.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <utility>

namespace {

std::unique_ptr<Studio> running;

class ObsFilter : public testing::Test {
protected:
    static void SetUpTestSuite() { running = std::make_unique<Studio>(); }
    static void TearDownTestSuite() { running.reset(); }

    Studio& studio = *running;
    const Image image = testImage(101, 67);

    static std::string text(const std::string& chain) {
        return R"({"mode":"text","text":")" + chain + R"("})";
    }

    void update(const std::string& settings) {
        const Data data(obs_data_create_from_json(settings.c_str()));
        obs_source_update(studio.filter(), data.get());
    }

    /// Clicks the button of the properties as they are now.
    void click(const char* button) {
        const Properties properties(obs_source_properties(studio.filter()));
        obs_property_t* const property = obs_properties_get(properties.get(), button);
        ASSERT_NE(property, nullptr) << button;
        obs_property_button_clicked(property, studio.filter());
    }

    Data settings() const { return Data(obs_source_get_settings(studio.filter())); }

    void press(const std::string& name) {
        struct Search {
            std::string name;
            obs_source_t* source;
            obs_hotkey_id found;
        } search{name + ".filter", studio.source(), OBS_INVALID_HOTKEY_ID};
        obs_enum_hotkeys(
            [](void* data, obs_hotkey_id id, obs_hotkey_t* hotkey) {
                auto& wanted = *static_cast<Search*>(data);
                if (obs_hotkey_get_registerer_type(hotkey) != OBS_HOTKEY_REGISTERER_SOURCE) return true;
                auto* const weak = static_cast<obs_weak_source_t*>(obs_hotkey_get_registerer(hotkey));
                const Source owner(obs_weak_source_get_source(weak));
                if (owner.get() == wanted.source && wanted.name == obs_hotkey_get_name(hotkey))
                    wanted.found = id;
                return true;
            },
            &search);
        ASSERT_NE(search.found, OBS_INVALID_HOTKEY_ID) << name;
        obs_hotkey_trigger_routed_callback(search.found, true);
        obs_hotkey_trigger_routed_callback(search.found, false);
    }
};

/// Linear light from 0 to 1 of a byte, and back.
double decoded(double byte) {
    const double value = byte / 255;
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

double encoded(double light) {
    return 255 * (light <= 0.0031308 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055);
}

TEST_F(ObsFilter, SynchronousAndAsynchronousSourcesHaveTheEnginesBytes) {
    for (const bool isAsynchronous : {false, true}) {
        studio.show(image, isAsynchronous);
        ASSERT_TRUE(studio.becomes(image)) << "libobs itself changes the picture";
        studio.addFilter(text("Horizontal Flip"));
        EXPECT_TRUE(studio.becomes(rendered(image, "Horizontal Flip")));
        for (const char* chain : {"Solarize:threshold=60%", "Vertical Flip; Camera Blur:percent blur=20"}) {
            update(text(chain));
            EXPECT_TRUE(studio.becomes(rendered(image, chain))) << chain;
        }
        EXPECT_EQ(studio.problem(), "");
    }
}

TEST_F(ObsFilter, AlphaIsStraightForFiltersAndMultipliedForObs) {
    // What a source with alpha hands out has colours that are multiplied in linear light.
    Image source = testImage(64, 48, true);
    for (std::size_t i = 0; i < source.pixels.size(); i += 4) {
        auto& alpha = source.pixels[i + 3];
        alpha = i % 3 == 0 ? 255 : i % 3 == 1 ? 0 : std::max<std::uint8_t>(alpha, 64);
        for (int c = 0; c < 3; ++c) source.pixels[i + c] = std::min(source.pixels[i + c], alpha);
    }
    studio.show(source);
    studio.addFilter(text("Horizontal Flip"));

    /// The last difference that was seen while there was time to become equal.
    const auto difference = [&](const Image& wanted, const auto& toleranceOfAlpha) {
        std::string last;
        studio.becomes([&](const Image& seen) {
            last = seen.pixels.size() == wanted.pixels.size() ? "" : "size";
            for (std::size_t i = 0; i < wanted.pixels.size() && last.empty(); ++i) {
                const int alpha = wanted.pixels[i | 3];
                const int tolerance = i % 4 == 3 ? 0 : toleranceOfAlpha(alpha);
                if (std::abs(seen.pixels[i] - wanted.pixels[i]) > tolerance) {
                    last = "byte " + std::to_string(i) + " of alpha " + std::to_string(alpha) + ": " +
                           std::to_string(seen.pixels[i]) + ", not " + std::to_string(wanted.pixels[i]);
                }
            }
            return last.empty();
        });
        return last;
    };
    EXPECT_EQ(
        difference(rendered(source, "Horizontal Flip"), [](int alpha) { return alpha % 255 == 0 ? 0 : 1; }),
        "");

    // Inverted, a straight colour c becomes 255 - c of the same alpha.
    update(text("Levels:(rgb) black output level=255,(rgb) white output level=0"));
    Image inverted = source;
    for (std::size_t i = 0; i < inverted.pixels.size(); ++i) {
        const int alpha = source.pixels[i | 3];
        if (i % 4 == 3 || alpha == 0) continue;
        const double straight = std::round(encoded(decoded(source.pixels[i]) * 255 / alpha));
        inverted.pixels[i] =
            static_cast<std::uint8_t>(std::round(encoded(decoded(255 - straight) * alpha / 255)));
    }
    EXPECT_EQ(difference(inverted, [](int alpha) { return alpha == 0 ? 255 : 2; }), "");
}

Image grey(int value) {
    Image image{8, 8, std::vector<std::uint8_t>(256, static_cast<std::uint8_t>(value))};
    for (std::size_t i = 3; i < 256; i += 4) image.pixels[i] = 255;
    return image;
}

TEST_F(ObsFilter, PicturesAreAtMostTwoFramesLate) {
    // Each of OBS's frames has its own grey; the callback runs where the frame is drawn.
    struct Lateness {
        Studio& studio;
        int frame = 0;
        int seen = 0;
        int late = 0;
    } lateness{studio};
    studio.show(grey(255));
    studio.addFilter(text("Horizontal Flip"));
    ASSERT_TRUE(studio.becomes(grey(255)));
    const auto step = [](void* data, float) {
        auto& state = *static_cast<Lateness*>(data);
        state.studio.change(grey(++state.frame));
    };
    const auto look = [](void* data, std::uint32_t, std::uint32_t) {
        auto& state = *static_cast<Lateness*>(data);
        const int shown = state.studio.seen().pixels[0];
        if (state.frame < 10 || shown == 255) return;
        state.late += state.frame - shown > 2 ? 1 : 0;
        ++state.seen;
    };
    obs_add_tick_callback(step, &lateness);
    obs_add_main_render_callback(look, &lateness);
    Studio::wait(50);
    obs_remove_main_render_callback(look, &lateness);
    obs_remove_tick_callback(step, &lateness);
    EXPECT_GT(lateness.seen, 20);
    // A machine that is busy with other things loses a frame here and there.
    EXPECT_LT(lateness.late, lateness.seen / 3);
}

TEST_F(ObsFilter, SlowChainsLeaveObsItsFrameRate) {
    const Image large = testImage(640, 360);
    studio.show(large);
    std::string slow = "Camera Blur:percent blur=90";
    for (int i = 0; i < 8; ++i) slow += "; " + slow;
    studio.addFilter(text(slow));
    Studio::wait(5);
    const std::uint32_t late = obs_get_lagged_frames(), before = obs_get_total_frames();
    Studio::wait(2 * framesASecond);
    // Waiting for the chain would make almost every frame late.
    EXPECT_LT(obs_get_lagged_frames() - late, (obs_get_total_frames() - before) / 2);
    for (int i = 0; i < 300 && studio.statistic("rendered") < 2; ++i) Studio::wait(1);
    EXPECT_GE(studio.statistic("rendered"), 2);
    EXPECT_GT(studio.statistic("skipped"), 2 * studio.statistic("rendered"));
    EXPECT_NE(studio.seen(), (Image{640, 360, std::vector<std::uint8_t>(large.pixels.size())}));
    // What was begun is ended first.
    update(text("Vertical Flip"));
    EXPECT_TRUE(studio.becomes(rendered(large, "Vertical Flip"), 20));
}

TEST_F(ObsFilter, SourcesChangeSizeHideAndVanish) {
    studio.show(image);
    studio.addFilter(text("Horizontal Flip"));
    for (const auto& [width, height] : {std::pair{64, 36}, {1, 1}, {333, 77}}) {
        const Image other = testImage(width, height);
        studio.change(other);
        EXPECT_TRUE(studio.becomes(rendered(other, "Horizontal Flip"))) << width;
    }
    // What was there before is not shown again, not even for a frame.
    obs_set_output_source(0, nullptr);
    studio.change(testImage(20, 20));
    Studio::wait(framesASecond + 5);
    EXPECT_EQ(studio.seen(), (Image{20, 20, std::vector<std::uint8_t>(1600)}));
    obs_set_output_source(0, studio.source());
    EXPECT_TRUE(studio.becomes(rendered(testImage(20, 20), "Horizontal Flip")));

    // Vertical Flip takes no rows of 32768 bytes: the source is shown as it is, and the filter says so.
    const Image wide = testImage(8192, 2);
    update(text("Vertical Flip"));
    studio.change(wide);
    EXPECT_TRUE(studio.becomes(wide));
    for (int i = 0; i < framesASecond && studio.problem().empty(); ++i) Studio::wait(1);
    EXPECT_THAT(studio.problem(), testing::HasSubstr("32767"));
    studio.change(image);
    EXPECT_TRUE(studio.becomes(rendered(image, "Vertical Flip")));
    EXPECT_EQ(studio.problem(), "");
}

TEST_F(ObsFilter, ListsAreMadeByButtonsAndKeepTheirValues) {
    studio.show(image);
    studio.addFilter("{}");
    EXPECT_TRUE(studio.becomes(image));
    for (const char* filter : {"Solarize", "ColorBalance", "VerticalFlip"}) {
        obs_data_set_string(settings().get(), "add", filter);
        click("add filter");
    }
    EXPECT_TRUE(studio.becomes(rendered(image, "Solarize; Color Balance; Vertical Flip")));
    update(R"({"1.Solarize.Threshold": 60, "2.ColorBalance.Red": 40})");
    EXPECT_TRUE(
        studio.becomes(rendered(image, "Solarize:threshold=60%; Color Balance:red=40%; Vertical Flip")));
    click("down 0");
    EXPECT_TRUE(
        studio.becomes(rendered(image, "Color Balance:red=40%; Solarize:threshold=60%; Vertical Flip")));
    EXPECT_DOUBLE_EQ(std::round(obs_data_get_double(settings().get(), "2.Solarize.Threshold")), 60);
    click("remove 0");
    click("up 1");
    EXPECT_TRUE(studio.becomes(rendered(image, "Vertical Flip; Solarize:threshold=60%")));
    EXPECT_FALSE(obs_data_has_user_value(settings().get(), "1.ColorBalance.Red"));
}

TEST_F(ObsFilter, ControlsAreTheFiltersOwn) {
    VireoEngine* engine = nullptr;
    VireoOpenOptions german{sizeof german, nullptr, "de"};
    ASSERT_EQ(vireoOpen(&german, &engine), VireoDone);
    studio.show(image);
    studio.addFilter("{}");
    for (std::uint32_t i = 0; i < vireoFilterCount(engine); ++i) {
        VireoFilter filter{sizeof filter};
        ASSERT_EQ(vireoDescribeFilter(engine, i, &filter), VireoDone);
        update(std::string(R"({"filters": [{"value": ")") + filter.key + R"("}]})");
        const Properties properties(obs_source_properties(studio.filter()));
        EXPECT_STREQ(obs_property_description(obs_properties_get(properties.get(), "filter 0")),
                     (std::string("1. ") + filter.name).c_str());
        for (std::uint32_t k = 0; k < filter.parameterCount; ++k) {
            VireoParameter parameter{sizeof parameter};
            ASSERT_EQ(vireoDescribeParameter(engine, i, k, &parameter), VireoDone);
            const std::string name = std::string("1.") + filter.key + "." + parameter.englishName;
            obs_property_t* const control = obs_properties_get(properties.get(), name.c_str());
            ASSERT_NE(control, nullptr) << name;
            EXPECT_STREQ(obs_property_description(control), parameter.label);
            switch (obs_property_get_type(control)) {
                case OBS_PROPERTY_INT:
                    EXPECT_EQ(obs_property_int_max(control), parameter.displayMaximum);
                    break;
                case OBS_PROPERTY_FLOAT:
                    EXPECT_EQ(obs_property_float_min(control), parameter.displayMinimum);
                    EXPECT_EQ(obs_property_float_max(control), parameter.displayMaximum);
                    break;
                case OBS_PROPERTY_LIST:
                    EXPECT_EQ(obs_property_list_item_count(control), parameter.choiceCount);
                    break;
                case OBS_PROPERTY_COLOR: EXPECT_EQ(parameter.kind, VireoColor); break;
                default: EXPECT_EQ(parameter.kind, VireoBoolean) << name;
            }
        }
    }
    vireoClose(engine);
}

TEST_F(ObsFilter, WhatIsNoChainIsSaidAndLeavesTheOneBefore) {
    studio.show(image);
    studio.addFilter(text("Solarize"));
    const Image expected = rendered(image, "Solarize");
    ASSERT_TRUE(studio.becomes(expected));
    for (const char* settings :
         {R"({"text": "Solarize:thresh"})", R"({"mode": "preset", "preset": "no such"})",
          R"({"mode": "file", "file": "/no/such/file.json"})",
          R"({"mode": "filters", "filters": [{"value": "Nothing"}]})", R"({"mode": "else"})"}) {
        update(settings);
        Studio::wait(5);
        EXPECT_NE(studio.problem(), "") << settings;
        EXPECT_EQ(studio.seen(), expected) << settings;
    }
    update(text("Vertical Flip"));
    EXPECT_TRUE(studio.becomes(rendered(image, "Vertical Flip")));
    EXPECT_EQ(studio.problem(), "");
}

TEST_F(ObsFilter, TimeRunsFromTheMomentOfSwitchingOn) {
    studio.show(image);
    studio.addFilter(text("Horizontal Flip:to=0.5s; Vertical Flip:from=0.5s"));
    const Image early = rendered(image, "Horizontal Flip"), late = rendered(image, "Vertical Flip");
    ASSERT_TRUE(studio.becomes(early));
    ASSERT_TRUE(studio.becomes(late));
    press("Vireo.Off");
    EXPECT_TRUE(studio.becomes(image));
    press("Vireo.On");
    EXPECT_TRUE(studio.becomes(early));
    EXPECT_TRUE(studio.becomes(late));
}

TEST_F(ObsFilter, TheHotkeyGoesFromPresetToPreset) {
    studio.show(image);
    studio.addFilter(text("Solarize"));
    Studio::wait(2);
    std::set<std::string> presets;
    for (int i = 0; i < 100; ++i) {
        press("Vireo.NextPreset");
        EXPECT_STREQ(obs_data_get_string(settings().get(), "mode"), "preset");
        if (!presets.insert(obs_data_get_string(settings().get(), "preset")).second) break;
    }
    EXPECT_GE(presets.size(), 11U);
    EXPECT_LT(presets.size(), 100U);
    Studio::wait(5);
    EXPECT_EQ(studio.problem(), "");
}

TEST_F(ObsFilter, AHundredFiltersComeAndGoWithoutGrowth) {
    studio.show(image);
    const auto comeAndGo = [this] {
        studio.addFilter(text("Ghosting; Solarize"));
        Studio::wait(1);
        studio.seen();
        studio.removeFilter();
    };
    for (int i = 0; i < 5; ++i) comeAndGo();
    obs_wait_for_destroy_queue();
    const long before = bnum_allocs();
    for (int i = 0; i < 100; ++i) comeAndGo();
    obs_wait_for_destroy_queue();
    EXPECT_LT(bnum_allocs() - before, 20);
}

TEST_F(ObsFilter, AFilterIsTakenOffWhileItIsDrawn) {
    studio.show(image);
    std::atomic<bool> isEnding = false;
    std::thread drawing([&] {
        while (!isEnding) studio.seen();
    });
    for (int i = 0; i < 400; ++i) {
        studio.addFilter(i % 2 == 0 ? text("Solarize") : "{}");
        std::this_thread::sleep_for(std::chrono::microseconds(i % 20 * 200));
        studio.removeFilter();
    }
    isEnding = true;
    drawing.join();
    EXPECT_TRUE(studio.becomes(image));
}

TEST(ObsPlugin, EveryLanguageHasEveryText) {
    std::map<std::string, std::set<std::string>> keys;
    for (const auto& file : std::filesystem::directory_iterator(VIREO_TESTED_PLUGIN "/data/locale")) {
        std::ifstream lines(file.path());
        for (std::string line; std::getline(lines, line);) {
            ASSERT_THAT(line, testing::MatchesRegex(R"([A-Za-z.]+="[^"]+")"));
            keys[file.path().stem()].insert(line.substr(0, line.find('=')));
        }
    }
    EXPECT_EQ(keys.size(), 7U);
    for (const auto& [language, found] : keys) EXPECT_EQ(found, keys["en-US"]) << language;
}

}  // namespace
