// SPDX-License-Identifier: MIT
// FxKit: the host's image library.
#ifndef VIREO_HOST_FXKIT_FXKIT_H
#define VIREO_HOST_FXKIT_FXKIT_H

#include "host/host_export.h"
#include "host/host_pointer.h"

/// Separable Gaussian blur over all four bytes of 4-byte pixels. The kernel reaches rx pixels across and ry
/// down and is cut there and normalised; its standard deviation is a third of the reach; edge pixels repeat;
/// a reach of 0 leaves that direction alone. Every byte lies within 1 of the exact result, and the cost of a
/// pixel does not grow with the reach. The flags and the two integers behind the reaches are accepted and
/// have no effect. Source and destination may be the same buffer.
VIREO_HOST_C void FX_GaussianBlur(const void* source, int32_t sourceRowBytes, int32_t sourceWidth,
                                  int32_t sourceHeight, int32_t sourcePixelBytes, void* destination,
                                  int32_t destinationRowBytes, int32_t destinationWidth,
                                  int32_t destinationHeight, int32_t destinationPixelBytes, double rx,
                                  double ry, int32_t flag1, int32_t flag2, int32_t value1, int32_t value2);

#endif
