// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_PREVIEW_LIVE_SETTINGS_H
#define VIREO_APP_PREVIEW_LIVE_SETTINGS_H

#include "app/preview/frame_shelf.h"
#include "app/preview/preview_controls.h"
#include "app/preview/preview_window.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace vireo {

/// Shows in a window what a settings dialog makes of a picture, as its values move. A dialog renders into its
/// scratch at every change; this looks there between two messages of the dialog's thread, on which it is made
/// and goes. At the window one may go to other frames of the clip, which the dialog then has before it.
class LiveSettings : private PreviewControls {
public:
    /// The pictures outlive it: what the dialog reads and where it renders.
    LiveSettings(FrameShelf& clip, Picture& source, const Picture& scratch, const std::string& title);
    LiveSettings(const LiveSettings&) = delete;
    LiveSettings& operator=(const LiveSettings&) = delete;
    ~LiveSettings() override;

private:
    void togglePause() override { isPlaying_ = !isPlaying_; }
    void step(int frames) override;
    void skip(double seconds) override;
    void jump(double share) override;
    void close() override { isClosed_ = true; }

    void look();
    void goTo(std::int64_t frame);

    FrameShelf& clip_;
    Picture& source_;
    const Picture& scratch_;
    std::shared_ptr<Picture> shown_;
    PreviewWindow window_;
    std::uintptr_t timer_ = 0;
    std::int64_t frame_ = 0;  ///< Before the dialog.
    std::atomic<std::int64_t> wished_ = 0;
    std::atomic<bool> isPlaying_ = false;
    std::atomic<bool> isClosed_ = false;
};

}  // namespace vireo

#endif
