// SPDX-License-Identifier: MIT
#include "filters/lens/lens_mapping.h"
#include "tests/support/instruction_sets.h"
#include "tests/support/test_frame.h"

namespace {

using LensDistortion::Lens;
using LensDistortion::LensMapping;

Lens randomLens(Random& random, int range) {
    const auto any = [&](double unit) {
        const int value = static_cast<int>(random() % (2u * range + 1)) - range;
        return Lens::scaled(static_cast<std::int16_t>(value), unit);
    };
    return {any(0.01), any(0.005), any(0.005), any(0.01), any(0.01)};
}

/// Part of a row, as the kernels place it and as the rule does, pixel by pixel.
void expectFollowsTheRule(const LensDistortionKernels& kernels, const LensMapping& mapping, int first,
                          int columns, int row) {
    const LensDistortion::TileColumns tile(mapping, first, columns);
    const int written = (columns + lensColumnBlock - 1) / lensColumnBlock * lensColumnBlock;
    std::vector<std::int32_t> x(static_cast<std::size_t>(written) + 1, 77), y = x;
    kernels.place(mapping.forKernels(), tile.forKernels(), rowForKernels(mapping.row(row)), x.data(),
                  y.data(), columns);
    for (int i = 0; i < columns; ++i) {
        std::int32_t ruleX, ruleY;
        mapping.position(mapping.place(mapping.column(first + i), mapping.row(row)), &ruleX, &ruleY);
        ASSERT_EQ(x[i], ruleX) << "column " << first + i << " row " << row;
        ASSERT_EQ(y[i], ruleY) << "column " << first + i << " row " << row;
    }
    ASSERT_EQ(x[written], 77);
    ASSERT_EQ(y[written], 77);
}

TEST(LensDistortionKernels, EverySetFollowsTheRuleUpToTheLargestFrames) {
    constexpr std::uint16_t fieldFlags[] = {0, FieldFlagUpper, FieldFlagLower, 0x0400, 0x0800, 0x0500};
    const int sizes[][2] = {{1, 8},       {7, 3},       {33, 9},      {720, 576},
                            {1920, 1080}, {3840, 2160}, {7680, 4320}, {8192, 8000}};
    Random random(4);
    for (const auto set : runnableInstructionSets()) {
        for (const auto& [width, height] : sizes) {
            SCOPED_TRACE(std::string(instructionSetName(set)) + ", " + std::to_string(width) + " wide");
            for (int round = 0; round < 60; ++round) {
                const Lens lens = randomLens(random, round % 3 == 0 ? 1 << round % 8 : 100);
                const LensSteps steps = width > 4000 ? LensSteps{1, 1} : lensSteps(fieldFlags[round % 6]);
                const LensMapping mapping({nullptr, 0, {0, 0, width, height}}, lens, steps);
                if (!mapping.fitsKernels()) continue;
                const int columns = 1 + static_cast<int>(random() % std::min(width, 100));
                const int first = static_cast<int>(random() % static_cast<unsigned>(width - columns + 1));
                const int row = static_cast<int>(random() % static_cast<unsigned>(height));
                expectFollowsTheRule(lensDistortionKernelsTables.at(set), mapping, first, columns, row);
                if (HasFatalFailure()) return;
            }
        }
    }
}

}  // namespace
