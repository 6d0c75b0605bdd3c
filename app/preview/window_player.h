// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_PREVIEW_WINDOW_PLAYER_H
#define VIREO_APP_PREVIEW_WINDOW_PLAYER_H

#include "app/media/media.h"

#include <string>

namespace vireo {

/// Plays what a processor makes of an input in a window, at the clip's own rate, until the window is closed.
/// Frames that come too late are left out. Throws Error.
void playInWindow(const RenderJob& job, FrameProcessor& processor, const std::string& title);

/// The picture with 8 bits a channel.
PicturePtr inEightBits(const Picture& picture);

}  // namespace vireo

#endif
