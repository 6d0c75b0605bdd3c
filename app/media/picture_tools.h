// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_PICTURE_TOOLS_H
#define VIREO_APP_MEDIA_PICTURE_TOOLS_H

#include "engine/chain/picture.h"

#include <memory>

namespace vireo {

/// How a stored picture is brought upright: first its rows and columns change places, then it is mirrored.
struct Orientation {
    bool transpose = false;
    bool mirrorX = false;
    bool mirrorY = false;

    bool upright() const { return !transpose && !mirrorX && !mirrorY; }
};

/// The orientation that an EXIF tag from 1 to 8 means; anything else is upright.
Orientation exifOrientation(int tag);

/// The picture brought upright.
std::shared_ptr<Picture> oriented(const Picture& picture, const Orientation& orientation);

/// Colours divided by alpha, rounded; where alpha is 0 they become 0.
void unpremultiply(Picture& picture);

/// Colours multiplied by alpha, rounded.
void premultiply(Picture& picture);

/// Whether any pixel is not opaque.
bool hasTransparency(const Picture& picture);

}  // namespace vireo

#endif
