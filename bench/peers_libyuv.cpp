// SPDX-License-Identifier: MIT
#include "bench/bench.h"
#include "simd/instruction_set.h"

#include <libyuv.h>

#include <array>
#include <memory>
#include <utility>

namespace bench {
namespace {

/// What VIREO_ISA holds the filters to.
int featuresOfTheChosenSet() {
    constexpr int sse2 = libyuv::kCpuInitialized | libyuv::kCpuHasX86 | libyuv::kCpuHasSSE2;
    constexpr int avx2 = sse2 | libyuv::kCpuHasSSSE3 | libyuv::kCpuHasSSE41 | libyuv::kCpuHasSSE42 |
                         libyuv::kCpuHasAVX | libyuv::kCpuHasAVX2 | libyuv::kCpuHasERMS |
                         libyuv::kCpuHasFMA3 | libyuv::kCpuHasF16C;
    switch (simd::chosenInstructionSet()) {
        case simd::InstructionSet::Baseline: return sse2;
        case simd::InstructionSet::Avx2: return avx2;
        default: return -1;
    }
}

}  // namespace

void addLibyuv() {
    libyuv::MaskCpuFlags(featuresOfTheChosenSet());
    add("Black & White", "libyuv ARGBGrayTo", [](Frames& f) {
        return [&f] {
            libyuv::ARGBGrayTo(f.source, f.size.width * 4, f.destination, f.size.width * 4, f.size.width,
                               f.size.height);
        };
    });
    add("Horizontal Flip", "libyuv ARGBMirror", [](Frames& f) {
        return [&f] {
            libyuv::ARGBMirror(f.source, f.size.width * 4, f.destination, f.size.width * 4, f.size.width,
                               f.size.height);
        };
    });
    add("Levels, gamma 1.5", "libyuv RGBColorTable, in place", [](Frames& f) {
        std::array<std::uint8_t, 1024> table{};
        for (std::size_t i = 0; i < table.size(); ++i) table[i] = static_cast<std::uint8_t>(255 - i / 4);
        return [&f, table] {
            libyuv::RGBColorTable(f.destination, f.size.width * 4, table.data(), 0, 0, f.size.width,
                                  f.size.height);
        };
    });
    add("Ghosting", "libyuv ARGBInterpolate, two blends", [](Frames& f) {
        const auto oldest = std::make_shared<Frames>(f.size);
        return [&f, oldest] {
            for (const auto& [over, weight] : {std::pair(f.source, 187), {oldest->source, 68}}) {
                libyuv::ARGBInterpolate(over, f.size.width * 4, f.destination, f.size.width * 4,
                                        f.destination, f.size.width * 4, f.size.width, f.size.height, weight);
            }
        };
    });
}

}  // namespace bench
