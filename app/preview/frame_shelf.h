// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_PREVIEW_FRAME_SHELF_H
#define VIREO_APP_PREVIEW_FRAME_SHELF_H

#include "app/media/media.h"

#include <cstdint>
#include <memory>
#include <string>

namespace vireo {

/// Single frames of an input, unfiltered, with 8 bits a channel.
class FrameShelf {
public:
    /// Throws Error where the input cannot be read.
    explicit FrameShelf(std::string input);
    ~FrameShelf();

    /// Of the whole input; 0 where unknown.
    std::int64_t frameCount() const;
    double frameRate() const;

    /// The one that follows the last costs least. Throws Error, or DamagedFrame.
    PicturePtr frame(std::int64_t number);

private:
    void open(std::int64_t first);

    const std::string input_;
    Messages messages_{true};
    StopRequest stop_;
    Media media_;
    std::int64_t next_ = 0;
};

}  // namespace vireo

#endif
