// SPDX-License-Identifier: MIT
#ifndef VIREO_SIMD_FLOATS_H
#define VIREO_SIMD_FLOATS_H

#include "simd/vectors.h"

namespace simd {
inline namespace VIREO_KERNEL_NAMESPACE {

template <VectorOf<std::int32_t> V>
Vector<float, sizeof(V)> toFloats(V lanes) {
    return __builtin_convertvector(lanes, Vector<float, sizeof(V)>);
}

/// Truncated toward zero. Values fit 32 bits.
template <VectorOf<float> V>
Vector<std::int32_t, sizeof(V)> toInts(V values) {
    return __builtin_convertvector(values, Vector<std::int32_t, sizeof(V)>);
}

}  // namespace VIREO_KERNEL_NAMESPACE
}  // namespace simd

#endif
