// SPDX-License-Identifier: GPL-2.0-or-later
// What a plug-in tells of its parameters, and that values come back as they were set.
#include "tests/bridges/frei0r/support/loaded_plugin.h"
#include "tests/bridges/frei0r/support/reference.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

namespace {

using testing::HasSubstr;

struct Use {
    explicit Use(const std::string& name) : plugin(pluginFile(name)), instance(plugin, 8, 8) {}
    InitialisedPlugin plugin;
    PluginInstance instance;
};

TEST(Parameters, AreThoseOfTheFilter) {
    for (const auto& file : pluginFiles()) {
        const InitialisedPlugin plugin(file);
        const f0r_plugin_info_t info = plugin.info();
        EXPECT_EQ(info.plugin_type, F0R_PLUGIN_TYPE_FILTER);
        EXPECT_EQ(info.color_model, F0R_COLOR_MODEL_BGRA8888);
        const Reference reference(info.name);
        const auto listed = reference.parameters();
        ASSERT_GE(info.num_params, static_cast<int>(listed.size()));
        for (int i = 0; i < info.num_params; ++i) {
            f0r_param_info_t parameter{};
            plugin.getParameterInfo(&parameter, i);
            if (i >= static_cast<int>(listed.size())) {  // of time
                EXPECT_EQ(parameter.type, F0R_PARAM_STRING);
                continue;
            }
            const VireoParameter& expected = listed[static_cast<std::size_t>(i)];
            EXPECT_STREQ(parameter.name, expected.englishName);
            EXPECT_THAT(parameter.explanation, HasSubstr(expected.englishName));
            constexpr int types[] = {F0R_PARAM_DOUBLE, F0R_PARAM_BOOL, F0R_PARAM_COLOR};
            EXPECT_EQ(parameter.type, types[expected.kind]);
        }
    }
}

TEST(Parameters, StartWithTheFiltersOwnSettings) {
    const Use solarize("vireo_solarize");
    EXPECT_EQ(solarize.plugin.number(solarize.instance, 0), 128.0 / 254);
    const Use replace("vireo_color_replace");
    f0r_param_color_t color{};
    replace.plugin.getParameter(replace.instance, &color, replace.plugin.parameter("Target Color"));
    EXPECT_THAT((std::vector{color.r, color.g, color.b}), testing::ElementsAre(1, 0, 0));
    EXPECT_EQ(replace.plugin.number(replace.instance, replace.plugin.parameter("Solid Colors")), 0);
    const Use bend("vireo_bend");
    EXPECT_EQ(bend.plugin.text(bend.instance, "Frame Rate"), "");
    EXPECT_EQ(bend.plugin.text(bend.instance, "Time Unit"), "s");
}

TEST(Parameters, KeepEveryWholeNumberOfSixteenBits) {
    const Use use("vireo_convolution_kernel");
    const int offset = use.plugin.parameter("Offset");
    int wrong = 0;
    for (int value = -32768; value <= 32767; ++value) {
        use.plugin.setNumber(use.instance, offset, (value + 32768) / 65535.0);
        wrong += std::lround(use.plugin.number(use.instance, offset) * 65535) - 32768 != value;
    }
    EXPECT_EQ(wrong, 0);
    // Between two whole numbers the upper one wins.
    use.plugin.setNumber(use.instance, offset, 0.5);
    EXPECT_EQ(use.plugin.number(use.instance, offset), 32768 / 65535.0);
}

TEST(Parameters, KeepEveryColour) {
    const Use use("vireo_color_pass");
    const int index = use.plugin.parameter("Color");
    for (int level = 0; level < 256; ++level) {
        const auto part = [](int value) { return static_cast<float>(value) / 255; };
        f0r_param_color_t color{part(level), part(255 - level), part(level ^ 0x55)};
        use.plugin.setParameter(use.instance, &color, index);
        f0r_param_color_t back{};
        use.plugin.getParameter(use.instance, &back, index);
        EXPECT_THAT((std::vector{back.r, back.g, back.b}), testing::ElementsAre(color.r, color.g, color.b));
    }
}

TEST(Parameters, LimitNumbersAndKeepTheOldValueForNone) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const Use use("vireo_replicate");
    for (const auto& [given, kept] :
         {std::pair{-3.0, 0.0}, {1e300, 1.0}, {infinity, 1.0}, {-infinity, 0.0}}) {
        use.plugin.setNumber(use.instance, 0, given);
        EXPECT_EQ(use.plugin.number(use.instance, 0), kept);
    }
    use.plugin.setNumber(use.instance, 0, 0.5);
    use.plugin.setNumber(use.instance, 0, std::nan(""));
    EXPECT_EQ(use.plugin.number(use.instance, 0), 0.5);
}

TEST(Parameters, OfTimeRefuseWhatTheyCannotRead) {
    const Use use("vireo_horizontal_hold");
    struct Texts {
        const char* name;
        std::vector<const char*> taken;
        std::vector<const char*> refused;
    };
    const Texts all[] = {
        {"Frame Rate",
         {"25", "30000/1001", "29.97", ""},
         {"0", "-25", "25/0", "fast", "25/", "/", "1e999", "nan", " 25"}},
        {"Time Unit", {"ms", "s", "seconds", "1/90000"}, {"", "0", "minutes", "-1"}},
        {"Clip Length", {"250", "1073741823", ""}, {"-1", "0", "2.5", "1073741824", "long", "inf"}},
    };
    for (const Texts& texts : all) {
        for (const char* taken : texts.taken) {
            use.plugin.setText(use.instance, texts.name, taken);
            EXPECT_EQ(use.plugin.text(use.instance, texts.name), taken);
            for (const char* refused : texts.refused) {
                use.plugin.setText(use.instance, texts.name, refused);
                EXPECT_EQ(use.plugin.text(use.instance, texts.name), taken) << texts.name << " " << refused;
            }
        }
    }
}

TEST(Parameters, ThatDoNotExistAreIgnored) {
    const Use use("vireo_bend");
    const double before = use.plugin.number(use.instance, 2);
    for (const int index : {-1, 14, 15, 1 << 30}) {
        double value = 0.75;
        use.plugin.setParameter(use.instance, &value, index);
        use.plugin.getParameter(use.instance, &value, index);
        EXPECT_EQ(value, 0.75);
        f0r_param_info_t info{};
        use.plugin.getParameterInfo(&info, index);
        EXPECT_STREQ(info.name, "");
    }
    f0r_param_string none = nullptr;
    use.plugin.setParameter(use.instance, &none, use.plugin.parameter("Frame Rate"));
    use.plugin.setParameter(use.instance, nullptr, 2);
    use.plugin.getParameter(use.instance, nullptr, 2);
    EXPECT_EQ(use.plugin.number(use.instance, 2), before);
}

}  // namespace
