// SPDX-License-Identifier: MIT
// What every filter promises of its settings and of the selectors: one row a filter.
#include "tests/support/filter_under_test.h"
#include "tests/support/recording_host.h"

#include "host/heapkit/memory_handles.h"
#include "host/pixkit/pixel_formats.h"

#include <string>
#include <string_view>

namespace {

enum class Stored { Kept, Overwritten };

struct SettingsRule {
    std::string_view filter;
    std::uint32_t id;
    /// What InitSettings asks for without settings, as RecordingHost writes it: work record, then settings.
    /// Empty for filters without settings, which answer 0.
    std::string_view allocations;
    std::vector<std::uint8_t> defaults;
    Stored stored = Stored::Kept;
    /// Bytes that take their defaults again where the others are kept.
    std::pair<std::size_t, std::size_t> startsAnew = {0, 0};
    bool answersFlags = true;
    bool hasDialog = false;
    std::int32_t withoutDialogWindow = -1;
    std::vector<std::string_view> formats = {};
    /// What an index past the last format finds written; "keep" is what stood there.
    std::string_view endOfFormats = "keep";
};

const std::vector<SettingsRule>& rules() {
    static const std::vector<SettingsRule> all{
        {.filter = "Alpha Glow",
         .id = 10001,
         .allocations = "64 20",
         .defaults = {25, 0, 0, 0, 255, 0, 0, 0, 0xC0, 0xC0, 0xC0, 0, 0xC0, 0xC0, 0xC0, 0, 0, 1, 0, 0}},
        {.filter = "Antialias", .id = 10002, .answersFlags = false, .formats = {"vuya", "bgra"}},
        {.filter = "Camera View",
         .id = 10011,
         .allocations = "112 36",
         .defaults =
             littleEndian<std::int16_t>({0, 0, 0, 500, 1, 100, -1, 0xFF, 0, 0, 0, 0, 160, 0, 120, 0, 1, 0}),
         .startsAnew = {16, 32},
         .answersFlags = false,
         .hasDialog = true},
        {.filter = "Color Balance (RGB)",
         .id = 10013,
         .allocations = "40 6",
         .defaults = littleEndian<std::int16_t>({255, 255, 255})},
        {.filter = "Color Pass", .id = 10015, .allocations = "16 8", .defaults = {10, 0, 0, 255, 0, 0, 0, 0}},
        {.filter = "Edge Feather",
         .id = 10020,
         .allocations = "2",
         .defaults = littleEndian<std::int16_t>({4}),
         .stored = Stored::Overwritten},
        {.filter = "Gamma Correction",
         .id = 10026,
         .allocations = "32 2",
         .defaults = littleEndian<std::int16_t>({10})},
        {.filter = "Ghosting", .id = 10029, .answersFlags = false},
        {.filter = "Horizontal Flip",
         .id = 10030,
         .answersFlags = false,
         .formats = {"VUya", "BGra", "ARgb", "Vuya", "Bgra", "Argb", "vuya", "argb", "bgra"},
         .endOfFormats = "badf"},
        {.filter = "Bend",
         .id = 10004,
         .allocations = "c56 24",
         .defaults = littleEndian<std::int16_t>({0, 0, 15, 4, 50, 0, 0, 15, 4, 50, -1, 0xFF}),
         .answersFlags = false,
         .hasDialog = true,
         .withoutDialogWindow = 65535},
        {.filter = "Black & White", .id = 10006, .answersFlags = false, .formats = {"vuya", "bgra"}},
        {.filter = "Color Replace",
         .id = 10016,
         .allocations = "24 12",
         .defaults = {10, 0, 0, 0xFF, 0, 0, 0, 0, 0, 0xFF, 0, 0}},
        {.filter = "Extract",
         .id = 10022,
         .allocations = "1176 8",
         .defaults = littleEndian<std::int16_t>({64, 192, 25, 0}),
         .answersFlags = false,
         .hasDialog = true},
        {.filter = "Horizontal Hold",
         .id = 10031,
         .allocations = "48 8",
         .defaults = littleEndian<std::int32_t>({0, 0}),
         .answersFlags = false,
         .hasDialog = true},
        {.filter = "Lens Distortion",
         .id = 10034,
         .allocations = "16",
         .defaults = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0xFF, 0xFF, 0xFF, 0, 0}},
        {.filter = "Replicate",
         .id = 10042,
         .allocations = "32 2",
         .defaults = littleEndian<std::int16_t>({2})},
        {.filter = "Solarize",
         .id = 10049,
         .allocations = "32 2",
         .defaults = littleEndian<std::int16_t>({128})},
        {.filter = "Vertical Flip", .id = 10052, .answersFlags = false},
        {.filter = "Vertical Hold", .id = 10053, .answersFlags = false},
        {.filter = "Camera Blur",
         .id = 10010,
         .allocations = "c32 2",
         .defaults = littleEndian<std::int16_t>({25}),
         .answersFlags = false,
         .hasDialog = true},
        {.filter = "Convolution Kernel",
         .id = 10017,
         .allocations = "48 23",
         .defaults = {0, 0, 1, 0, 0, 0, 1, 0, 2, 0, 1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 6, 0, 1},
         .formats = {"bgra"}},
        {.filter = "Levels",
         .id = 10035,
         .allocations = "4424 40",
         .defaults = littleEndian<std::int16_t>(
             {0, 255, 0, 255, 100, 0, 255, 0, 255, 100, 0, 255, 0, 255, 100, 0, 255, 0, 255, 100}),
         .answersFlags = false,
         .hasDialog = true},
    };
    return all;
}

class SettingsTest : public testing::TestWithParam<SettingsRule> {
protected:
    SettingsTest() : filter(GetParam().id) { filter.invocation.hostCallbacks = host.callbacks(); }

    bool keepsSettings() const { return !GetParam().allocations.empty(); }

    RecordingHost host;
    FilterUnderTest filter;
};

TEST_P(SettingsTest, InitSettingsWritesTheDefaultsIntoANewHandle) {
    EXPECT_EQ(filter.call(FilterSelectorInitSettings), keepsSettings() ? 1 : 0);
    EXPECT_EQ(host.allocations(), GetParam().allocations);
    EXPECT_EQ(filter.settings(), GetParam().defaults);
    EXPECT_EQ(host.liveHandles(), keepsSettings() ? 1 : 0) << "only the settings live on";
}

TEST_P(SettingsTest, InitSettingsKeepsOrOverwritesWhatIsStored) {
    if (!keepsSettings()) return;
    std::vector<std::uint8_t> bytes(GetParam().defaults.size());
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(0xA1 + 7 * i);
    filter.setSettings(bytes);
    const MemoryHandle handle = filter.invocation.settingsHandle;

    EXPECT_EQ(filter.call(FilterSelectorInitSettings), 1);
    EXPECT_EQ(filter.invocation.settingsHandle.get(), handle);
    const auto& defaults = GetParam().defaults;
    for (auto [i, end] = GetParam().startsAnew; i < end; ++i) bytes[i] = defaults[i];
    EXPECT_EQ(filter.settings(), GetParam().stored == Stored::Kept ? bytes : defaults);
    EXPECT_EQ(host.liveHandles(), 0);
}

TEST_P(SettingsTest, InitSettingsSurvivesAHostWithoutMemory) {
    for (int available = 0; available < 2; ++available) {
        filter.dropSettings();
        host.limitAllocations(available);
        EXPECT_EQ(filter.call(FilterSelectorInitSettings), keepsSettings() ? 1 : 0);
    }
}

TEST_P(SettingsTest, OtherSelectorsAnswerAndChangeNothing) {
    filter.call(FilterSelectorInitSettings);
    host.forget();
    const auto settings = filter.settings();
    for (const int selector : {2, 3, 4, 6, 7, 8, 9, 10, 99, -1, 32767}) {
        if (selector == FilterSelectorGetPixelFormat && !GetParam().formats.empty()) continue;
        const int expected = selector == FilterSelectorGetFilterFlags && GetParam().answersFlags ? 3 : 0;
        EXPECT_EQ(filter.call(static_cast<std::int16_t>(selector)), expected) << "selector " << selector;
    }
    EXPECT_EQ(filter.settings(), settings);
    EXPECT_EQ(std::uint32_t{filter.invocation.pixelFormat}, 0u);
    EXPECT_EQ(host.allocations(), "");
}

TEST_P(SettingsTest, SetupWithoutADialogWindow) {
#if defined(_WIN32)
    if (GetParam().hasDialog) return;  // A window would wait for its user.
#endif
    filter.call(FilterSelectorInitSettings);
    const auto settings = filter.settings();
    const int live = host.liveHandles();
    EXPECT_EQ(filter.call(FilterSelectorSetup), GetParam().hasDialog ? GetParam().withoutDialogWindow : 0);
    EXPECT_EQ(filter.settings(), settings);
    EXPECT_EQ(host.liveHandles(), live) << "nobody else releases the work record";
}

TEST_P(SettingsTest, ExecuteLeavesSettingsAlone) {
    Random random(1);
    TestFrame source({.width = 20, .height = 12}, random);
    TestFrame destination({.width = 20, .height = 12}, random);
    filter.render(source, destination);
    EXPECT_TRUE(filter.settings().empty()) << "without settings none are made";

    filter.call(FilterSelectorInitSettings);
    const auto settings = filter.settings();
    filter.render(source, destination);
    EXPECT_EQ(filter.settings(), settings);
}

TEST_P(SettingsTest, NamesItsPixelFormatsByIndex) {
    const auto& formats = GetParam().formats;
    if (formats.empty()) return;
    const auto written = [this] {
        return std::string(reinterpret_cast<const char*>(&filter.invocation.pixelFormat), 4);
    };
    for (std::uint32_t index = 0; index < formats.size(); ++index) {
        filter.invocation.pixelFormatIndex = index;
        EXPECT_EQ(filter.call(FilterSelectorGetPixelFormat), 0);
        EXPECT_EQ(written(), formats[index]);
    }
    for (const std::uint32_t index : {static_cast<std::uint32_t>(formats.size()), 0xFFFFFFFFu}) {
        filter.invocation.pixelFormat = PixKit::formatCode("keep");
        filter.invocation.pixelFormatIndex = index;
        EXPECT_EQ(filter.call(FilterSelectorGetPixelFormat), 1);
        EXPECT_EQ(written(), GetParam().endOfFormats);
    }
}

INSTANTIATE_TEST_SUITE_P(Filters, SettingsTest, testing::ValuesIn(rules()), [](const auto& test) {
    std::string name;
    for (const char c : test.param.filter) {
        if (std::isalnum(static_cast<unsigned char>(c))) name += c;
    }
    return name;
});

}  // namespace
