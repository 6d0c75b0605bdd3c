// SPDX-License-Identifier: MIT
#ifndef VIREO_ENGINE_CHAIN_FIELDS_H
#define VIREO_ENGINE_CHAIN_FIELDS_H

#include "engine/chain/clip.h"

namespace vireo {

enum class Field { None, Upper, Lower };

/// Progressive frames are, and those with no rows for a second field.
constexpr bool isRenderedWhole(Interlacing interlacing, int height) {
    return interlacing == Interlacing::Progressive || height < 2;
}

constexpr int upperFieldRows(int frameRows) { return (frameRows + 1) / 2; }

/// The upper field has picture rows 0, 2, 4…, the lower 1, 3, 5…. A frame of one row has no lower field.
PicturePtr extractField(const Picture& frame, Field field);

/// The frame that the two fields make up, in `target` where there is one of its size. The upper field has as
/// many rows as the lower or one more.
PicturePtr weaveFields(const Picture& upper, const Picture& lower,
                       const std::shared_ptr<Picture>& target = nullptr);

/// Copies the pixels of a picture to one of the same size and format.
void copyPicture(const Picture& source, Picture& target);

}  // namespace vireo

#endif
