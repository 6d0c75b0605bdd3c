// SPDX-License-Identifier: MIT
#ifndef VIREO_TESTS_SUPPORT_INSTRUCTION_SETS_H
#define VIREO_TESTS_SUPPORT_INSTRUCTION_SETS_H

#include "simd/instruction_set.h"

#include <vector>

/// The instruction sets that this processor runs.
inline std::vector<simd::InstructionSet> runnableInstructionSets() {
    std::vector<simd::InstructionSet> sets;
    for (const auto set : simd::allInstructionSets) {
        if (set <= simd::processorInstructionSet()) sets.push_back(set);
    }
    return sets;
}

#endif
