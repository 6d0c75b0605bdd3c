// SPDX-License-Identifier: MIT
#include "filters/color/levels.h"
#include "tests/support/filter_under_test.h"

#include <functional>

namespace {

constexpr std::uint32_t levelsId = 10035;

using Levels::Channel;

/// What a table must hold, level by level.
void expectTable(const Channel& channel, const Channel& master, const std::function<int(int)>& expected) {
    const ChannelTable table = Levels::buildTable(channel, master);
    for (int i = 0; i < 256; ++i) ASSERT_EQ(table[static_cast<std::size_t>(i)], expected(i)) << "level " << i;
}

TEST(LevelsTable, EndsOneShortOfWhiteByDefault) {
    expectTable({}, {}, [](int i) { return std::min(i, 254); });
}

TEST(LevelsTable, ComposesTheChannelThroughTheMaster) {
    // Start 100, end 255 * 155 / 256 + 100 = 254.
    expectTable({}, {.inputBlack = 100}, [](int i) {
        return i < 100 ? 0 : i >= 254 ? 254 : (i - 100) * 254 / 154;
    });
    // Start 10 * 100 / 256 + 50 = 53, end 200 * 100 / 256 + 50 = 128; low 20 + 30 * 100 / 256 = 31, high 98.
    expectTable({10, 200, 30, 200, 100}, {50, 150, 20, 120, 100}, [](int i) {
        return i < 53 ? 31 : i >= 128 ? 98 : (i - 53) * 67 / 75 + 31;
    });
}

TEST(LevelsTable, BendsByTheProductOfBothGammas) {
    // Exponent 1/2: the largest t with t * t <= 254 * i.
    const auto root = [](int i) {
        int t = 0;
        while ((t + 1) * (t + 1) <= 254 * i) ++t;
        return std::min(t, 254);
    };
    expectTable({.gamma = 200}, {}, root);
    expectTable({}, {.gamma = 200}, root);
    expectTable({.gamma = -200}, {.gamma = -100}, root);
    expectTable({.gamma = 50}, {}, [](int i) { return i >= 254 ? 254 : i * i / 254; });
    expectTable({.gamma = 50}, {.gamma = 200}, [](int i) { return std::min(i, 254); });
}

TEST(LevelsTable, TruncatesTowardZeroWhereTheOutputFalls) {
    expectTable({.outputBlack = 255, .outputWhite = 0}, {}, [](int i) { return i >= 254 ? 0 : 254 - i; });
    expectTable({.inputWhite = 128, .outputBlack = 255, .outputWhite = 0}, {},
                [](int i) { return i >= 127 ? 0 : 254 - i * 254 / 127; });
    expectTable({.inputWhite = 200, .outputBlack = 100, .outputWhite = 50}, {},
                [](int i) { return i >= 199 ? 49 : 99 - static_cast<int>(i * 50 / 199.0); });
}

TEST(LevelsTable, LetsTheUpperEndWinWherePointsAreCrossedAndTheLowerOneWhereGammaIsZero) {
    for (const std::int16_t black : {100, 200}) {
        expectTable({.inputBlack = black, .inputWhite = 100}, {}, [](int i) { return i < 99 ? 0 : 254; });
    }
    expectTable({.outputBlack = 40, .gamma = 0}, {}, [](int i) { return i >= 254 ? 254 : 39; });
}

TEST(LevelsTable, ClampsPointsAfterSixteenBits) {
    // 32767 * 255 / 256 = 32638 is above 255; 32767 * 32767 / 256 = 4194047 is -257 in 16 bits.
    expectTable({.inputWhite = 32767}, {}, [](int i) { return i < 255 ? i * 254 / 255 : 254; });
    expectTable({.inputWhite = 32767}, {.inputWhite = 32767}, [](int) { return 254; });
}

#if !defined(_WIN32)
TEST(Levels, SetupWithoutSettingsMakesThemEmpty) {
    FilterUnderTest filter(levelsId);
    EXPECT_EQ(filter.call(FilterSelectorSetup), -1);
    EXPECT_EQ(filter.settings(), std::vector<std::uint8_t>(40));
}
#endif

}  // namespace
