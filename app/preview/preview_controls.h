// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_PREVIEW_PREVIEW_CONTROLS_H
#define VIREO_APP_PREVIEW_PREVIEW_CONTROLS_H

namespace vireo {

/// What somebody at a preview's window wishes for. Called on the window's thread.
class PreviewControls {
public:
    virtual ~PreviewControls() = default;

    /// At the end: plays again from the begin.
    virtual void togglePause() = 0;

    /// So many frames on, or back; pauses.
    virtual void step(int frames) = 0;

    virtual void skip(double seconds) = 0;

    /// To a place of the clip, 0 to 1.
    virtual void jump(double share) = 0;

    /// The window is gone.
    virtual void close() = 0;
};

}  // namespace vireo

#endif
