// SPDX-License-Identifier: MIT
#include "filters/lens/camera_projection.h"
#include "filters/lens/camera_view.h"
#include "host/utilkit/utilkit.h"
#include "tests/filters/lens/lens_reference.h"
#include "tests/filters/plain_filter.h"

namespace {

using CameraView::Settings;

constexpr std::uint32_t cameraViewId = 10011;

std::vector<std::uint8_t> bytesOf(Settings settings) {
    std::vector<std::uint8_t> packed(36);
    std::size_t cursor = 0;
    settings.fields([&](auto& field) {
        std::memcpy(packed.data() + cursor, &field, sizeof field);
        cursor += sizeof field;
    });
    EXPECT_EQ(cursor, 34u);
    return packed;
}

CameraPose poseOf(const Settings& settings, double width) {
    const FrameRect& reference = settings.referenceRect;
    const double ratio = width / (reference.right - reference.left);
    const auto radians = [](int degrees) { return degrees * 0.017453292519943295; };
    return {orbitingEye(radians(settings.longitude), radians(settings.latitude), ratio * settings.distance),
            radians(settings.roll), settings.zoom / 100.0 - 0.02, 1 / (ratio * settings.focalLength)};
}

QuadMapping mappingOf(const Settings& settings, double width, double height, const ReferenceSteps& steps) {
    const double viewWidth = width * steps.x, viewHeight = height * steps.y;
    const Matrix<4> view = buildViewTransform(poseOf(settings, width), viewWidth, viewHeight);
    const Quad corners{{{0, 0}, {width - 1, 0}, {width - 1, height - 1}, {0, height - 1}}};
    Quad projected{};
    for (std::size_t i = 0; i < 4; ++i) {
        double q[4];
        for (std::size_t row = 0; row < 4; ++row) {
            q[row] =
                view[row][0] * corners[i].x + view[row][1] * corners[i].y + view[row][2] * 0 + view[row][3];
        }
        projected[i] = {q[0] / q[3] + viewWidth / 2, q[1] / q[3] + viewHeight / 2};
    }
    return solveQuadMapping(projected, corners);
}

/// 16.16, or ten pictures away where it is too far.
std::int64_t fixedPoint(double value, int size) {
    if (std::abs(value) > 1e10) return std::int64_t{size} * 655360;
    const double whole = std::trunc(value);
    return static_cast<std::int64_t>(whole) * 65536 + static_cast<std::int64_t>((value - whole) * 65536);
}

/// The 16.16 place of a pixel; false without one inside the picture.
bool placeOf(const QuadMapping& m, int column, int row, const ReferenceSteps& steps, int width, int height,
             std::int64_t* x, std::int64_t* y) {
    const double X = column * steps.x, Y = row * steps.y;
    const double den = m.g * X + m.h * Y + 1;
    const double sx = (m.a * X + m.b * Y + m.c) / den;
    const double sy = (m.d * X + m.e * Y + m.f) / den;
    if (std::isnan(sx) || std::isnan(sy)) return false;
    *x = fixedPoint(sx, width) / steps.x;
    *y = fixedPoint(sy, height) / steps.y;
    return *x >= 0 && *x < std::int64_t{width} * 65536 && *y >= 0 && *y < std::int64_t{height} * 65536;
}

Picture viewed(TestFrame& frame, const Settings& settings, std::uint16_t fieldFlags) {
    Picture source = frame.picture();
    const int width = source.width, height = source.height;
    std::uint32_t fill = 0;
    if (settings.fillAlphaChannel != 0) {
        SmoothAlpha(source.pixels.data(), width * 4, width, height);
        const auto color = static_cast<int>(settings.fillColor);
        fill = pixelOf(channelOf(settings.fillColor, 2), channelOf(settings.fillColor, 1), color & 255, 255);
    }
    const ReferenceSteps steps = referenceSteps(fieldFlags);
    const QuadMapping mapping = mappingOf(settings, width, height, steps);
    Picture result{width, height};
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            std::int64_t x, y;
            const bool inside = placeOf(mapping, column, row, steps, width, height, &x, &y);
            result.at(column, height - 1 - row) = inside ? referenceSample(source, fill, x, y, true) : fill;
        }
    }
    return result;
}

Settings randomSettings(Random& random) {
    const auto between = [&](int low, int high) {
        return static_cast<std::int16_t>(low +
                                         static_cast<int>(random() % static_cast<unsigned>(high - low + 1)));
    };
    return {between(0, 360),
            between(0, 360),
            between(0, 360),
            between(1, 1000),
            between(1, 500),
            between(40, 400),
            static_cast<std::uint32_t>(random()),
            CameraView::previewSize,
            static_cast<std::uint16_t>(random() % 2)};
}

TEST(CameraView, EqualsThePlainVersionOnAnyFrame) {
    expectEqualsPlain(cameraViewId, [](FilterUnderTest& filter, Picture&, Random& random) {
        Settings settings = CameraView::initialSettings;
        if (random() % 8 != 0) settings = randomSettings(random);
        if (random() % 16 == 0) settings.zoom = 2;  // Divides by zero everywhere.
        filter.setSettings(bytesOf(settings));
        filter.invocation.fieldFlags = oneOf(fieldFlagCases, random);
        return [settings, flags = std::uint16_t{filter.invocation.fieldFlags}](TestFrame& source) {
            return viewed(source, settings, flags);
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

TEST(CameraView, CopiesWithoutAReferenceWidth) {
    Random random(4);
    TestFrame source({.width = 33, .height = 21}, random);
    FilterUnderTest filter(cameraViewId);
    Settings settings = CameraView::initialSettings;
    settings.referenceRect.right = 0;
    filter.setSettings(bytesOf(settings));
    EXPECT_TRUE(samePicture(source.picture(), filter.rendered(source)));
}

}  // namespace
