// SPDX-License-Identifier: MIT
#ifndef VIREO_ENGINE_CHAIN_VUYA_H
#define VIREO_ENGINE_CHAIN_VUYA_H

#include "engine/chain/picture.h"

namespace vireo {

/// "vuya" bytes (Cr, Cb, Y, alpha) of a "bgra" picture by BT.601 in studio range: Y is 16 to 235, Cb and Cr
/// 16 to 240 about 128. Each byte is the exact value rounded half up; alpha is copied.
std::shared_ptr<Picture> vuyaFromBgra(const Picture& picture);

/// The way back, each byte the exact value rounded half up and limited to 0..255.
std::shared_ptr<Picture> bgraFromVuya(const Picture& picture);

}  // namespace vireo

#endif
