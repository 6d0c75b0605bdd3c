// SPDX-License-Identifier: MIT
#include "framework/row_copy_kernels.h"
#include "tests/support/instruction_sets.h"
#include "tests/support/test_frame.h"

#include <algorithm>

namespace {

TEST(RowCopyKernels, CopyAnyBytesToAnyAddress) {
    Random random(1);
    std::vector<std::uint8_t> source(700);
    for (auto& byte : source) byte = static_cast<std::uint8_t>(random());
    for (const auto set : runnableInstructionSets()) {
        const RowCopyKernels& kernels = rowCopyKernelsTables.at(set);
        for (const auto copy : {kernels.copy, kernels.copyPastCaches}) {
            for (int bytes = 0; bytes < 300; ++bytes) {
                const std::size_t from = random() % 70, to = random() % 70;
                std::vector<std::uint8_t> destination(500, 0xEE), expected = destination;
                std::copy_n(source.begin() + from, bytes, expected.begin() + to);
                copy(source.data() + from, destination.data() + to, bytes);
                ASSERT_EQ(destination, expected) << instructionSetName(set) << ", " << bytes << " bytes";
            }
        }
    }
}

}  // namespace
