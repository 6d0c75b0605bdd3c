// SPDX-License-Identifier: MIT
// Shows the frame as a flat picture seen by a camera that orbits it: perspective, roll and zoom, with a fill
// around the picture.
#include "filters/lens/camera_view.h"

#include "filters/lens/camera_view_kernels.h"
#include "framework/filter.h"
#include "framework/registration_order.h"

#include <algorithm>
#include <optional>

namespace CameraView {
namespace {

constexpr double radiansPerDegree = 0.017453292519943295;

const CameraViewKernels& kernels = cameraViewKernelsTables.chosen();

/// From the destination's pixels to those of the picture.
QuadMapping mappingOf(const FrameView& source, const Settings& settings, const LensSteps& steps) {
    const auto width = static_cast<double>(source.width());
    const auto height = static_cast<double>(source.height());
    const FrameRect& reference = settings.referenceRect;
    const double ratio = width / static_cast<double>(std::int64_t{reference.right} - reference.left);
    const CameraPose pose{.eye = orbitingEye(settings.longitude * radiansPerDegree,
                                             settings.latitude * radiansPerDegree, ratio * settings.distance),
                          .roll = settings.roll * radiansPerDegree,
                          .zoom = settings.zoom / 100.0 - 0.02,
                          .perspective = 1 / (ratio * settings.focalLength)};
    const double viewWidth = width * steps.x;
    const double viewHeight = height * steps.y;
    const Matrix<4> transform = buildViewTransform(pose, viewWidth, viewHeight);

    const Quad corners{{{0, 0}, {width - 1, 0}, {width - 1, height - 1}, {0, height - 1}}};
    Quad projected{};
    std::transform(corners.begin(), corners.end(), projected.begin(), [&](const Point& corner) {
        const double column[4] = {corner.x, corner.y, 0, 1};
        double result[4] = {};
        for (std::size_t row = 0; row < 4; ++row) {
            for (std::size_t k = 0; k < 4; ++k) result[row] += transform[row][k] * column[k];
        }
        return Point{result[0] / result[3] + viewWidth / 2, result[1] / result[3] + viewHeight / 2};
    });
    return solveQuadMapping(projected, corners);
}

std::int32_t render(const FilterInvocation& invocation, const Settings& settings) {
    project(invocation.sourceFrame, invocation.destFrame, settings, lensSteps(invocation.fieldFlags));
    return 0;
}

/// Also where settings exist the reference rectangle starts anew: old projects depend on it.
Settings renewed(const Settings& stored) {
    Settings settings = stored;
    settings.referenceRect = previewSize;
    return settings;
}

constexpr FilterDeclaration<Settings> filter{
    .id = 10011,
    .initialSettings = initialSettings,
    .renewed = renewed,
    .workRecord = {.bytes = workRecordBytes},
    .render = render,
    .dialog = {.templateId = 1500, .procedure = dialogProcedure},
};

}  // namespace

void project(FrameBuffer* source, FrameBuffer* destination, const Settings& settings,
             const LensSteps& steps) {
    const FrameView frame = frameThroughPixKit(source);
    if (frame.width() <= 0 || frame.height() <= 0) return;
    if (settings.referenceRect.left == settings.referenceRect.right) {
        vpixCopy(source, destination, &frame.bounds, &frame.bounds, VPixCopyReplace);
        return;
    }
    std::optional<SoftenedCopy> copy;
    std::uint32_t fill = 0;
    FrameView sampled = frame;
    if (settings.fillAlphaChannel != 0) {
        copy.emplace(source);
        if (copy->get() == nullptr) return;
        sampled = frameThroughPixKit(copy->get());
        fill = fillPixel(settings.fillColor);
    }
    const SampledPicture picture = sampledPicture(sampled, fill);
    const CameraRow firstRow{.mapping = mappingOf(frame, settings, steps),
                             .xStep = steps.x,
                             .yStep = steps.y,
                             .firstColumn = 0,
                             .row = 0,
                             .width = picture.width,
                             .height = picture.height};
    renderSampled(picture, frameThroughPixKit(destination), [&](std::int32_t first, std::int32_t columns) {
        return [=, &firstRow](std::int32_t row, std::int32_t* x, std::int32_t* y) {
            CameraRow place = firstRow;
            place.firstColumn = first;
            place.row = row;
            kernels.place(place, x, y, columns);
        };
    });
}

void Register(VSK::PluginRegistry& registry) { registerFilter<filter>(registry); }

}  // namespace CameraView
