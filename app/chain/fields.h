// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_CHAIN_FIELDS_H
#define VIREO_APP_CHAIN_FIELDS_H

#include "app/render/picture.h"

namespace vireo {

enum class Field { None, Upper, Lower };

constexpr int upperFieldRows(int frameRows) { return (frameRows + 1) / 2; }

/// The upper field has picture rows 0, 2, 4…, the lower 1, 3, 5…. A frame of one row has no lower field.
PicturePtr extractField(const Picture& frame, Field field);

/// The frame that the two fields make up. The upper has as many rows as the lower or one more.
PicturePtr weaveFields(const Picture& upper, const Picture& lower);

}  // namespace vireo

#endif
