// SPDX-License-Identifier: MIT
// Kernels of rows of 4-byte pixels against plain loops.
#ifndef VIREO_TESTS_FILTERS_SUPPORT_KERNEL_ROWS_H
#define VIREO_TESTS_FILTERS_SUPPORT_KERNEL_ROWS_H

#include "tests/support/filter_under_test.h"

/// Holds `kernel(set, source, destination, width)` against `plain(pixel)`, for every instruction set, all
/// widths up to a few vectors and any alignment, in another row and in place.
template <class Kernel, class Plain>
void expectRowsEqualPlain(Random& random, Kernel&& kernel, Plain&& plain) {
    constexpr std::size_t margin = 64;
    for (const auto set : runnableInstructionSets()) {
        for (std::size_t width = 0; width < 200; ++width) {
            std::vector<std::uint8_t> from(4 * width + 2 * margin);
            for (auto& byte : from) byte = static_cast<std::uint8_t>(random());
            const std::size_t offset = random() % margin;
            const auto expectedOver = [&](std::vector<std::uint8_t> bytes) {
                for (std::size_t i = offset; i < offset + 4 * width; i += 4) {
                    std::uint32_t pixel;
                    std::memcpy(&pixel, from.data() + i, 4);
                    pixel = plain(pixel);
                    std::memcpy(bytes.data() + i, &pixel, 4);
                }
                return bytes;
            };

            std::vector<std::uint8_t> to(from.size(), 0x5A);
            const auto expected = expectedOver(to);
            kernel(set, from.data() + offset, to.data() + offset, static_cast<std::int64_t>(width));
            ASSERT_EQ(to, expected) << instructionSetName(set) << ", width " << width;

            const auto expectedInPlace = expectedOver(from);
            kernel(set, from.data() + offset, from.data() + offset, static_cast<std::int64_t>(width));
            ASSERT_EQ(from, expectedInPlace) << instructionSetName(set) << ", in place, width " << width;
        }
    }
}

#endif
