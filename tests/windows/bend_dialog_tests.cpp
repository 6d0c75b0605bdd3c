// SPDX-License-Identifier: MIT
#include "filters/warp/bend.h"
#include "tests/windows/dialog_driver.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>

namespace {

using namespace std::chrono_literals;
using Bend::Settings;

constexpr std::uint32_t bendId = 10004;
constexpr int placeholder = 21;

void expectStored(const DialogFixture& fixture, const Settings& settings) {
    EXPECT_EQ(std::memcmp(fixture.settings().data(), &settings, sizeof settings), 0);
}

TEST(BendDialog, ShowsWhatIsStoredAndStoresWhatItShows) {
    DialogFixture fixture(bendId, 80, 60);
    fixture.setRecord(Settings{{1, 2, 20, 5, 60}, {3, 1, 7, 16, 3}, 0x00123456});
    fixture.work(IDOK, [](const Dialog& dialog) {
        EXPECT_EQ(dialog.title(), L"Bend Settings");
        EXPECT_EQ(dialog.text(10), L"Right");
        EXPECT_EQ(dialog.text(11), L"Triangle");
        EXPECT_EQ(dialog.text(15), L"Out");
        EXPECT_EQ(dialog.text(16), L"Circle");
        EXPECT_EQ(dialog.slider(12), 20);
        EXPECT_EQ(dialog.slider(18), 16);
        dialog.choose(10, 2);
        dialog.choose(16, 3);
        dialog.slide(14, 33);
        dialog.slide(17, 30);
    });
    expectStored(fixture, {{2, 2, 20, 5, 33}, {3, 3, 30, 16, 3}, 0x00123456});

    // What its sliders do not reach is limited.
    fixture.setRecord(Settings{{1, 3, 500, -3, 0}, {0, 0, -1, 99, 99}, 7});
    fixture.work(IDOK);
    expectStored(fixture, {{1, 3, 30, 2, 3}, {0, 0, 0, 16, 90}, 7});
}

TEST(BendDialog, ThePreviewPlays) {
    DialogFixture fixture(bendId, 320, 240);
    fixture.work(IDCANCEL, [](const Dialog& dialog) {
        SetForegroundWindow(dialog.window());
        const RECT box = dialog.box(placeholder);
        std::set<std::vector<COLORREF>> pictures;
        for (int i = 0; i < 30 && pictures.size() < 3; ++i) {
            std::vector<COLORREF> picture;
            for (int y = -50; y <= 50; y += 10) {
                picture.push_back(
                    dialog.pixel((box.left + box.right) / 2 + 20, (box.top + box.bottom) / 2 + y));
            }
            pictures.insert(picture);
            std::this_thread::sleep_for(100ms);
        }
        EXPECT_GE(pictures.size(), 3U);
    });
}

}  // namespace
