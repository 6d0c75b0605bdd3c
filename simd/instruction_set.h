// SPDX-License-Identifier: MIT
#ifndef VIREO_SIMD_INSTRUCTION_SET_H
#define VIREO_SIMD_INSTRUCTION_SET_H

#include <cstdlib>
#include <string_view>

namespace simd {

/// The baseline is what every machine has that runs the build: SSE2, or the 128-bit
/// vectors of 64-bit ARM or WebAssembly.
enum class InstructionSet { Baseline, Avx2, Avx512 };

inline constexpr InstructionSet allInstructionSets[] = {InstructionSet::Baseline, InstructionSet::Avx2,
                                                        InstructionSet::Avx512};

/// The name that the environment variable VIREO_ISA takes.
constexpr std::string_view instructionSetName(InstructionSet set) {
#if defined(__wasm_simd128__)
    constexpr std::string_view baseline = "simd128";
#else
    constexpr std::string_view baseline = "baseline";
#endif
    constexpr std::string_view names[] = {baseline, "avx2", "avx512"};
    return names[static_cast<int>(set)];
}

/// The best set that this processor runs.
inline InstructionSet processorInstructionSet() {
#if defined(VIREO_X86_KERNELS)
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
        __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl") &&
        __builtin_cpu_supports("avx512vbmi")) {
        return InstructionSet::Avx512;
    }
    if (__builtin_cpu_supports("avx2")) return InstructionSet::Avx2;
#endif
    return InstructionSet::Baseline;
}

/// The set in use: the processor's best, or what VIREO_ISA names where that is lower.
inline InstructionSet chosenInstructionSet() {
    static const InstructionSet chosen = [] {
        const InstructionSet best = processorInstructionSet();
        const char* wish = std::getenv("VIREO_ISA");
        if (wish == nullptr) return best;
        for (InstructionSet set : allInstructionSets) {
            if (set <= best && instructionSetName(set) == wish) return set;
        }
        return best;
    }();
    return chosen;
}

}  // namespace simd

#endif
