// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_CHAIN_MIX_H
#define VIREO_APP_CHAIN_MIX_H

#include "app/render/picture.h"

namespace vireo {

/// Lays `percent` (1 to 99) of a filter's result over its source, at the depth of the pictures. Alpha becomes
/// (s (100 - m) + d m) / 100; colours the same weighted by their alphas, unweighted where both alphas are 0;
/// whole numbers are rounded half up. Both pictures have the same geometry and format.
void mixInto(const Picture& source, Picture& result, int percent);

}  // namespace vireo

#endif
