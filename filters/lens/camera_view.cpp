// SPDX-License-Identifier: MIT
// Shows the frame as a flat picture seen by a camera that orbits it: perspective, roll and zoom, with a fill
// around the picture.
#include "filters/lens/camera_view.h"

#include "filters/lens/camera_view_dialog.h"
#include "filters/lens/camera_view_kernels.h"
#include "framework/dialog_launcher.h"
#include "framework/registration_order.h"
#include "framework/settings.h"

#include <algorithm>
#include <cstring>
#include <optional>

namespace CameraView {
namespace {

constexpr std::uint16_t dialogId = 1500;

constexpr RecordSizes recordSizes{.workRecord = workRecordSize, .settings = settingsSize};

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

std::int32_t execute(const FilterInvocation& invocation) {
    render(invocation.sourceFrame, invocation.destFrame, settingsOr(invocation, initialSettings),
           lensSteps(invocation.fieldFlags));
    return 0;
}

std::int32_t setup(FilterInvocation** handle) {
    WorkRecord workRecord = newWorkRecord(**handle, recordSizes);
    if (!workRecord) return static_cast<std::int32_t>(noDialog);
    const Settings settings = settingsOr(**handle, initialSettings);
    constexpr DialogState::Shown nothing{DialogState::nothingShown, DialogState::nothingShown};
    const DialogState state{.shown = {nothing, nothing, nothing, nothing, nothing, nothing},
                            .values = {settings.longitude, settings.latitude, settings.roll,
                                       settings.focalLength, settings.distance, settings.zoom},
                            .fillAlphaChannel = settings.fillAlphaChannel,
                            .fillColor = settings.fillColor,
                            .invocation = handle};
    std::memcpy(*workRecord.get(), &state, sizeof state);
    return static_cast<std::int32_t>(runSettingsDialog(**handle, dialogId, dialogProcedure, workRecord));
}

std::int32_t init(FilterInvocation& invocation) {
    // Also where settings exist the reference rectangle starts anew: old projects depend on it.
    Settings settings = settingsOr(invocation, initialSettings);
    settings.referenceRect = previewSize;
    const WorkRecord workRecord = newWorkRecord(invocation, recordSizes);
    if (workRecord && ensureSettingsHandle(invocation, recordSizes.settings)) {
        writeSettings(invocation.settingsHandle, settings);
    }
    return 1;
}

std::int32_t entry(void*, std::int16_t selector, FilterInvocation** invocation) {
    switch (selector) {
        case FilterSelectorExecute: return execute(**invocation);
        case FilterSelectorSetup: return setup(invocation);
        case FilterSelectorInitSettings: return init(**invocation);
        default: return 0;
    }
}

}  // namespace

void render(FrameBuffer* source, FrameBuffer* destination, const Settings& settings, const LensSteps& steps) {
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
    CameraRow place{.mapping = mappingOf(frame, settings, steps),
                    .xStep = steps.x,
                    .yStep = steps.y,
                    .firstColumn = 0,
                    .row = 0,
                    .width = picture.width,
                    .height = picture.height};
    renderSampled(picture, frameThroughPixKit(destination), [&](std::int32_t first, std::int32_t columns) {
        place.firstColumn = first;
        return [&place, columns](std::int32_t row, std::int32_t* x, std::int32_t* y) {
            place.row = row;
            kernels.place(place, x, y, columns);
        };
    });
}

void Register(VSK::PluginRegistry& registry, std::uint32_t id) { registry.Add(id, entry, 10011); }

}  // namespace CameraView
