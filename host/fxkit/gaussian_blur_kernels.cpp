// SPDX-License-Identifier: MIT
#include "host/fxkit/gaussian_blur_kernels.h"

#include "simd/floats.h"
#include "simd/ints.h"

#include <algorithm>

namespace VIREO_KERNEL_NAMESPACE {
namespace {

using namespace simd;

// Two registers' worth of pixels: all of their states stay in registers.
constexpr int stripRegisters = 2;
constexpr int stripValues = stripRegisters * laneCount<Floats>;
constexpr int stripPixels = stripValues / 4;

struct State {
    Floats values[blurStateValues];
};

template <class Value>
void start(const BlurAxis& axis, const Value* first, std::ptrdiff_t step, float* state) {
    for (int i = 0; i < stripRegisters; ++i) {
        State sums = {};
        sums.values[0] = broadcast<Floats>(axis.half);
        for (std::int64_t x = 0; x < axis.startCount; ++x) {
            const Floats pixel = toFloats(loadExtended(first + x * step + i * laneCount<Floats>));
            for (int k = 0; k < blurStateValues; ++k) {
                sums.values[k] += broadcast<Floats>(axis.start[x].values[k]) * pixel;
            }
        }
        for (int k = 0; k < blurStateValues; ++k) {
            store(state + k * stripValues + i * laneCount<Floats>, sums.values[k]);
        }
    }
}

/// The blurred value where the window stands, and half.
Floats halfAbove(const BlurAxis& axis, const State& state) {
    Floats value = broadcast<Floats>(axis.weights[0]) * state.values[0];
    for (int k = 0; k < blurCosines; ++k) {
        value += broadcast<Floats>(axis.weights[1 + k]) * state.values[1 + 2 * k];
    }
    return value;
}

void moveOn(const BlurAxis& axis, State& state, Floats drive) {
    state.values[0] += drive;
    for (int k = 0; k < blurCosines; ++k) {
        Floats& place = state.values[1 + 2 * k];
        Floats& speed = state.values[2 + 2 * k];
        speed -= broadcast<Floats>(axis.pull[k]) * place;
        place += speed + drive;
    }
}

template <class Value, class Result>
void walk(const BlurAxis& axis, const Value* first, std::ptrdiff_t step, std::int64_t from,
          std::int64_t count, float* stateValues, Result* result, std::ptrdiff_t line, int lines) {
    constexpr int blockSteps = 16;
    Result block[blockSteps][stripValues];
    State states[stripRegisters];
    for (int i = 0; i < stripRegisters; ++i) {
        for (int k = 0; k < blurStateValues; ++k) {
            states[i].values[k] = load<Floats>(stateValues + k * stripValues + i * laneCount<Floats>);
        }
    }
    for (const std::int64_t end = from + count; from < end;) {
        const int steps = static_cast<int>(std::min<std::int64_t>(blockSteps, end - from));
        for (int s = 0; s < steps; ++s, ++from) {
            const Value* entering = first + std::min(from + axis.reach + 1, axis.length - 1) * step;
            const Value* leaving = first + std::max<std::int64_t>(from - axis.reach, 0) * step;
            for (int i = 0; i < stripRegisters; ++i) {
                const int at = i * laneCount<Floats>;
                storeNarrowed(block[s] + at, toInts(halfAbove(axis, states[i])));
                moveOn(axis, states[i], toFloats(loadExtended(entering + at) - loadExtended(leaving + at)));
            }
        }
        for (int p = 0; p < lines; ++p) {
            for (int s = 0; s < steps; ++s) {
                std::memcpy(result + p * line + 4 * s, block[s] + 4 * p, 4 * sizeof(Result));
            }
        }
        result += 4 * steps;
    }
    for (int i = 0; i < stripRegisters; ++i) {
        for (int k = 0; k < blurStateValues; ++k) {
            store(stateValues + k * stripValues + i * laneCount<Floats>, states[i].values[k]);
        }
    }
}

}  // namespace

const BlurKernels blurKernels{stripPixels, start<std::uint8_t>, start<std::int16_t>,
                              walk<std::uint8_t, std::int16_t>, walk<std::int16_t, std::uint8_t>};

}  // namespace VIREO_KERNEL_NAMESPACE
