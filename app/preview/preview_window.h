// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_PREVIEW_PREVIEW_WINDOW_H
#define VIREO_APP_PREVIEW_PREVIEW_WINDOW_H

#include "engine/chain/picture.h"

#include <memory>
#include <string>

namespace vireo {

class PreviewControls;

/// A window that shows pictures, on a thread of its own. It may be resized; pictures keep their shape, with
/// black beside them.
///
/// Keys: the space bar pauses; comma and full stop step back and on; the arrows skip 5 seconds; Home goes to
/// the begin; 1 gives the window the picture's size; q and Escape close it. The right button goes to a place
/// of the clip.
class PreviewWindow {
public:
    /// Of pictures of a size; `pixelAspect` is a pixel's width by its height. The controls outlive it. Throws
    /// Error where the system gives no window.
    PreviewWindow(PreviewControls& controls, const std::string& title, int width, int height,
                  double pixelAspect);
    PreviewWindow(const PreviewWindow&) = delete;
    PreviewWindow& operator=(const PreviewWindow&) = delete;
    ~PreviewWindow();

    /// A picture with four bytes a pixel, and what the title says behind its beginning. Any thread may call.
    void show(PicturePtr picture, const std::string& state);

private:
    class Implementation;
    std::unique_ptr<Implementation> implementation_;
};

}  // namespace vireo

#endif
