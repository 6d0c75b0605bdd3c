// SPDX-License-Identifier: MIT
#include "filters/lens/fixed_point.h"
#include "host/utilkit/utilkit.h"
#include "tests/support/test_frame.h"

#include <cmath>

namespace {

TEST(LensFixedPoint, EqualsTheHostsOperations) {
    Random random(2);
    const std::int32_t edges[] = {0,          1,         -1,        65535,      65536,     -65536,
                                  0x7FFF0000, INT32_MAX, INT32_MIN, -INT32_MAX, 655360000, 46340 << 8};
    const auto any = [&] {
        return random() % 3 == 0 ? edges[random() % std::size(edges)]
                                 : static_cast<std::int32_t>(random()) >> random() % 31;
    };
    for (int i = 0; i < 200000; ++i) {
        const std::int32_t a = any();
        const std::int32_t b = any();
        ASSERT_EQ(fixedMul(a, b), FixedMul(a, b)) << a << ' ' << b;
        ASSERT_EQ(fixedDiv(a, b), FixedDiv(a, b)) << a << ' ' << b;
    }
    EXPECT_EQ(fixedMul(INT64_MAX, -5), -fixedLargest);
    EXPECT_EQ(fixedDiv(INT64_MIN, -5), fixedLargest);
}

TEST(LensFixedPoint, RootsAreTruncated) {
    Random random(3);
    const auto check = [](std::int64_t square) {
        const auto root = static_cast<long double>(fixedRoot(square)) / 65536;
        ASSERT_LE(root * root, square);
        ASSERT_GT((root + 1.0L / 65536) * (root + 1.0L / 65536), square);
    };
    for (std::int64_t square = 0; square < 70000; ++square) check(square);
    for (int i = 0; i < 20000; ++i) check(static_cast<std::int64_t>(random() % (1u << 30)));
    check((1 << 26) + 1);  // The nearest double to this root is a whole number of 65536ths above it.
}

}  // namespace
