// SPDX-License-Identifier: MIT
#include "filters/lens/camera_projection.h"
#include "filters/lens/camera_view.h"
#include "host/utilkit/utilkit.h"
#include "tests/filters/lens/plain_sampler.h"
#include "tests/filters/plain_filter.h"

#include <cmath>

namespace {

using CameraView::Settings;

constexpr std::uint32_t cameraViewId = 10011;

QuadMapping mappingOf(const Settings& settings, double width, double height, const PlainSteps& steps) {
    const double ratio = width / settings.referenceRect.right;
    const auto radians = [](int degrees) { return degrees * 0.017453292519943295; };
    const Vector3 eye =
        orbitingEye(radians(settings.longitude), radians(settings.latitude), ratio * settings.distance);
    const double viewWidth = width * steps.x, viewHeight = height * steps.y;
    const Matrix<4> view = buildViewTransform(
        {eye, radians(settings.roll), settings.zoom / 100.0 - 0.02, 1 / (ratio * settings.focalLength)},
        viewWidth, viewHeight);
    const Quad corners{{{0, 0}, {width - 1, 0}, {width - 1, height - 1}, {0, height - 1}}};
    Quad projected{};
    for (std::size_t i = 0; i < 4; ++i) {
        const auto along = [&](std::size_t row) {
            return view[row][0] * corners[i].x + view[row][1] * corners[i].y + view[row][3];
        };
        projected[i] = {along(0) / along(3) + viewWidth / 2, along(1) / along(3) + viewHeight / 2};
    }
    return solveQuadMapping(projected, corners);
}

Picture viewed(Picture source, const Settings& settings, const PlainSteps& steps) {
    if (settings.referenceRect.right == 0) return source;
    const QuadMapping m = mappingOf(settings, source.width, source.height, steps);
    const bool opaque = settings.fillAlphaChannel != 0;
    if (opaque) SmoothAlpha(source.pixels.data(), source.width * 4, source.width, source.height);
    const auto fixedPoint = [](double value) {
        return std::abs(value) < 1e10 ? static_cast<std::int64_t>(value * 65536) : INT64_MIN;
    };
    return plainlySampled(source, opaque, settings.fillColor, [&](int column, int row) {
        const double x = column * steps.x, y = row * steps.y;
        const double w = m.g * x + m.h * y + 1;
        return PlainPlace{fixedPoint((m.a * x + m.b * y + m.c) / w) / steps.x,
                          fixedPoint((m.d * x + m.e * y + m.f) / w) / steps.y};
    });
}

TEST(CameraView, EqualsThePlainVersionOnAnyFrame) {
    expectEqualsPlain(cameraViewId, [](FilterUnderTest& filter, Picture&, Random& random) {
        Settings settings = CameraView::initialSettings;
        if (random() % 8 != 0) {
            for (auto* angle : {&settings.longitude, &settings.latitude, &settings.roll})
                *angle = between(0, 360, random);
            settings.focalLength = between(1, 1000, random);
            settings.distance = between(1, 500, random);
            settings.zoom = between(40, 400, random);
            settings.fillColor = static_cast<std::uint32_t>(random());
            settings.fillAlphaChannel = random() % 2;
        }
        if (random() % 16 == 0) settings.zoom = 2;  // Divides by zero everywhere.
        if (random() % 16 == 0) settings.referenceRect.right = 0;
        filter.setRecord(settings);
        return [settings, steps = plainSteps(filter.invocation.fieldFlags)](const TestFrame& source) {
            return viewed(source.picture(), settings, steps);
        };
    });
}

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

}  // namespace
