// SPDX-License-Identifier: MIT
// What is shown after keys that come faster than frames.
#include "app/base/interruption.h"
#include "app/preview/playback.h"

#include <gmock/gmock.h>

#include <chrono>
#include <optional>
#include <thread>
#include <vector>

namespace vireo {
namespace {

/// A clip of ten frames whose pipelines are this thread.
class PlaybackKeys : public testing::Test {
protected:
    PlaybackKeys() {
        begin(0);
        playback.togglePause();
        show(1);
    }

    void begin(std::int64_t frame) {
        stop.emplace();
        playback.begin(*stop, {0, 9, 25});
        next = frame;
    }

    /// Shows so many frames as a pipeline hands them over.
    void show(int frames) {
        for (int i = 0; i < frames && next < 10; ++i, ++next) {
            if (playback.waitFor({next, 10, static_cast<double>(next) / 25, 25, Interlacing::Progressive}))
                shown.push_back(next);
        }
    }

    void goOn() {
        playback.end();
        const auto frame = playback.nextWish();
        ASSERT_TRUE(frame);
        begin(*frame);
    }

    Playback playback;
    std::optional<StopRequest> stop;
    std::int64_t next = 0;
    std::vector<std::int64_t> shown;
};

TEST_F(PlaybackKeys, StepEachTimeHoweverFast) {
    for (int i = 0; i < 3; ++i) playback.step(1);
    show(3);
    EXPECT_THAT(shown, testing::ElementsAre(0, 1, 2, 3));

    playback.step(-1);
    goOn();
    playback.step(-1);  // while the pipeline opens
    goOn();
    playback.step(1);
    playback.step(1);
    playback.step(-1);
    goOn();
    show(1);
    EXPECT_EQ(shown.back(), 2);
    playback.step(-1);
    playback.step(1);
    goOn();
    playback.step(1);
    show(2);
    EXPECT_EQ(shown.back(), 3);
}

TEST_F(PlaybackKeys, StayWithinTheClip) {
    playback.jump(1);
    goOn();
    show(1);
    EXPECT_EQ(shown.back(), 9);
    playback.step(1);
    playback.skip(-0.04);
    goOn();
    show(1);
    EXPECT_EQ(shown.back(), 8) << "nothing lies behind the last frame";

    playback.jump(1);
    goOn();
    show(1);
    playback.end();
    std::optional<std::int64_t> wish;
    std::thread ended([&] { wish = playback.nextWish(); });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    playback.step(1);
    playback.step(1);
    playback.step(-1);
    ended.join();
    EXPECT_EQ(wish, 8);
    begin(*wish);
    playback.togglePause();
    show(1);
    EXPECT_EQ(shown.back(), 8) << "it goes on and does not begin again";
    playback.skip(-100);
    goOn();
    show(1);
    EXPECT_EQ(shown.back(), 0);
    playback.close();
    playback.end();
    EXPECT_EQ(playback.nextWish(), std::nullopt);
}

}  // namespace
}  // namespace vireo
