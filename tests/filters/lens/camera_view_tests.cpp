// SPDX-License-Identifier: MIT
#include "filters/lens/camera_projection.h"
#include "tests/support/filter_under_test.h"

#include <algorithm>

namespace {

constexpr std::uint32_t cameraViewId = 10011;

TEST(CameraView, InvertsMatrices) {
    Random random(3);
    std::uniform_real_distribution<double> value(-3, 3);
    for (int round = 0; round < 200; ++round) {
        Matrix<8> matrix{};
        for (auto& row : matrix) {
            for (double& cell : row) cell = random() % 4 == 0 ? 0 : value(random);
        }
        for (std::size_t i = 0; i < 8; ++i)
            matrix[i][(i + 3) % 8] += 20;  // Far from singular, off the diagonal.
        const Matrix<8> inverse = invertMatrix(matrix);
        for (std::size_t row = 0; row < 8; ++row) {
            for (std::size_t column = 0; column < 8; ++column) {
                double sum = 0;
                for (std::size_t k = 0; k < 8; ++k) sum += matrix[row][k] * inverse[k][column];
                ASSERT_NEAR(sum, row == column ? 1 : 0, 1e-12);
            }
        }
    }
    // Without any pivot the smallest stands in, once for each row.
    const Matrix<4> inverse = invertMatrix(Matrix<4>{});
    for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(inverse[i][i], 1 / 1e-20);
}

TEST(CameraView, CopiesWithoutAReferenceWidthAndFillsWhereItDividesByZero) {
    Random random(4);
    TestFrame source({.width = 33, .height = 21}, random);
    FilterUnderTest filter(cameraViewId);
    filter.call(FilterSelectorInitSettings);
    const auto initial = filter.settings();

    auto settings = initial;
    constexpr std::size_t reference = 16, zoom = 10;
    std::fill_n(settings.begin() + reference, sizeof(FrameRect), std::uint8_t{0});
    filter.setSettings(settings);
    EXPECT_TRUE(samePicture(source.picture(), filter.rendered(source)));

    settings = initial;
    settings[zoom] = 2;
    filter.setSettings(settings);
    Picture filled{33, 21};
    std::ranges::fill(filled.pixels, 0xFFFFFFFF);
    EXPECT_TRUE(samePicture(filled, filter.rendered(source)));
}

}  // namespace
