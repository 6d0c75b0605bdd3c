// SPDX-License-Identifier: GPL-2.0-or-later
// Which values a plug-in takes. The hosts' own tests see that it names its parameters.
#include "tests/bridges/frei0r/support/loaded_plugin.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

struct Use {
    explicit Use(const std::string& name) : plugin(pluginFile(name)), instance(plugin, 8, 8) {}
    InitialisedPlugin plugin;
    PluginInstance instance;
};

TEST(Parameters, LimitNumbersAndKeepTheOldValueForNone) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const Use use("vireo_convolution_kernel");
    const int offset = use.plugin.parameter("Offset");
    const double middle = 32768 / 65535.0;  // Between two whole numbers the upper one wins.
    for (const auto& [given, kept] : {std::pair{-3.0, 0.0},
                                      {1e300, 1.0},
                                      {-infinity, 0.0},
                                      {infinity, 1.0},
                                      {0.5, middle},
                                      {std::nan(""), middle}}) {
        use.plugin.setNumber(use.instance, offset, given);
        EXPECT_EQ(use.plugin.number(use.instance, offset), kept) << given;
    }
}

TEST(Parameters, OfTimeRefuseWhatTheyCannotRead) {
    const Use use("vireo_horizontal_hold");
    struct Texts {
        const char* name;
        const char* first;
        std::vector<const char*> taken, refused;
    };
    const Texts all[] = {
        {"Frame Rate",
         "",
         {"25", "30000/1001", "29.97", ""},
         {"0", "-25", "25/0", "fast", "25/", "/", "1e999", "nan", " 25"}},
        {"Time Unit", "s", {"ms", "s", "seconds", "1/90000"}, {"", "0", "minutes", "-1"}},
        {"Clip Length", "", {"250", "1073741823", ""}, {"-1", "0", "2.5", "1073741824", "long", "inf"}},
    };
    for (const Texts& texts : all) {
        EXPECT_EQ(use.plugin.text(use.instance, texts.name), texts.first);
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
