// SPDX-License-Identifier: MIT
#include "filters/lens/camera_projection.h"
#include "filters/lens/camera_view.h"
#include "filters/lens/camera_view_kernels.h"
#include "host/utilkit/utilkit.h"
#include "tests/filters/support/lens_reference.h"
#include "tests/support/filter_under_test.h"

#include <numbers>

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

QuadMapping mappingOf(const Settings& settings, double width, double height, const LensSteps& steps) {
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
bool placeOf(const QuadMapping& m, int column, int row, const LensSteps& steps, int width, int height,
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
    const LensSteps steps = lensSteps(fieldFlags);
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
    Random random(1);
    FilterUnderTest filter(cameraViewId);
    for (const Geometry& geometry : awkwardGeometries()) {
        for (const std::uint16_t flags : fieldFlagCases) {
            TestFrame source(geometry, random);
            const Settings settings =
                random() % 4 == 0 ? CameraView::initialSettings : randomSettings(random);
            filter.setSettings(bytesOf(settings));
            filter.invocation.fieldFlags = flags;
            EXPECT_TRUE(samePicture(viewed(source, settings, flags), filter.rendered(source)))
                << geometry << ", flags " << flags << ", longitude " << settings.longitude << ", latitude "
                << settings.latitude << ", roll " << settings.roll;
        }
    }
}

TEST(CameraView, MappingUndoesTheProjection) {
    Random random(2);
    for (int round = 0; round < 500; ++round) {
        Settings settings = randomSettings(random);
        settings.latitude = static_cast<std::int16_t>(random() % 81);
        settings.longitude = static_cast<std::int16_t>(random() % 81);
        settings.focalLength = static_cast<std::int16_t>(600 + random() % 400);
        const double width = 320, height = 240;
        const CameraPose pose = poseOf(settings, width);
        const QuadMapping m = mappingOf(settings, width, height, {1, 1});
        const double degree = std::numbers::pi / 180;
        const double lon = settings.longitude * degree, lat = settings.latitude * degree;
        const double roll = settings.roll * degree;
        // The camera's axes by angles: right, up, and from the picture toward it.
        const Vector3 side{std::cos(lon), 0, -std::sin(lon)};
        const Vector3 up{-std::sin(lon) * std::sin(lat), std::cos(lat), -std::cos(lon) * std::sin(lat)};
        const Vector3 toward{std::sin(lon) * std::cos(lat), std::sin(lat), std::cos(lon) * std::cos(lat)};
        const double x = random() % 320, y = random() % 240;
        const double px = x - width / 2, py = height / 2 - y;
        const double u = side.x * px + side.y * py;
        const double v = up.x * px + up.y * py;
        const double depth = toward.x * px + toward.y * py - 2.0 * settings.distance;
        const double w = 1 - pose.perspective * depth;
        const double X = (std::cos(roll) * u + std::sin(roll) * v) / pose.zoom / w + width / 2;
        const double Y = (std::sin(roll) * u - std::cos(roll) * v) / pose.zoom / w + height / 2;
        const double den = m.g * X + m.h * Y + 1;
        EXPECT_NEAR((m.a * X + m.b * Y + m.c) / den, x, 1e-6);
        EXPECT_NEAR((m.d * X + m.e * Y + m.f) / den, y, 1e-6);
    }
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

TEST(CameraView, DegenerateCamerasFill) {
    Random random(4);
    TestFrame source({.width = 33, .height = 21}, random);
    FilterUnderTest filter(cameraViewId);
    Settings settings = CameraView::initialSettings;
    settings.fillColor = 0x00332211;
    settings.zoom = 2;  // Divides by zero everywhere.
    filter.setSettings(bytesOf(settings));
    Picture filled{33, 21};
    for (auto& pixel : filled.pixels) pixel = 0xFF112233;
    EXPECT_TRUE(samePicture(filled, filter.rendered(source)));

    settings = CameraView::initialSettings;
    settings.referenceRect.right = 0;
    filter.setSettings(bytesOf(settings));
    EXPECT_TRUE(samePicture(source.picture(), filter.rendered(source))) << "no reference width";

    for (int round = 0; round < 300; ++round) {
        std::vector<std::uint8_t> bytes(36);
        for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
        if (round % 2 == 0) std::memcpy(bytes.data(), "\x5A\x00\x5A\x00", 4);  // 90 degrees each way.
        filter.setSettings(bytes);
        filter.rendered(source);
    }
}

TEST(CameraView, WritesNothingOutsideTheDestination) {
    Random random(5);
    FilterUnderTest filter(cameraViewId);
    TestFrame source({.width = 30, .height = 20, .left = 5, .top = 5}, random);
    for (const Geometry& geometry : awkwardGeometries()) {
        TestFrame destination(geometry);
        filter.setSettings(bytesOf(randomSettings(random)));
        filter.render(source, destination);
        EXPECT_TRUE(destination.guardsHold()) << geometry;
    }
    TestFrame destination({.width = 30, .height = 20});
    source.handle()->bounds = {0, 0, 30, -20};
    filter.render(source, destination);
    EXPECT_TRUE(samePicture(Picture{30, 20}, destination.picture()));
}

TEST(CameraViewKernels, EverySetEqualsThePlainVersion) {
    Random random(6);
    for (const auto set : runnableInstructionSets()) {
        for (int round = 0; round < 500; ++round) {
            const int width = static_cast<int>(random() % 50000) + 2,
                      height = static_cast<int>(random() % 3000) + 2;
            const LensSteps steps = lensSteps(fieldFlagCases[random() % 6]);
            const QuadMapping mapping = mappingOf(randomSettings(random), width, height, steps);
            const int columns = static_cast<int>(random() % 70) + 1;
            const int first = static_cast<int>(random() % static_cast<unsigned>(width));
            const int row = static_cast<int>(random() % static_cast<unsigned>(height));
            std::vector<std::int32_t> x(static_cast<std::size_t>(columns) + 1, 77), y = x;
            cameraViewKernelsTables.at(set).place({mapping, steps.x, steps.y, first, row, width, height},
                                                  x.data(), y.data(), columns);
            for (int i = 0; i < columns; ++i) {
                std::int64_t placeX, placeY;
                const bool inside = placeOf(mapping, first + i, row, steps, width, height, &placeX, &placeY);
                ASSERT_EQ(x[i], inside ? placeX >> 8 : -1) << instructionSetName(set);
                ASSERT_EQ(y[i], inside ? placeY >> 8 : -1) << instructionSetName(set);
            }
            ASSERT_EQ(x[columns], 77);
        }
    }
}

}  // namespace
