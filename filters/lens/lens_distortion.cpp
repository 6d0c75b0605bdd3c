// SPDX-License-Identifier: MIT
// Bends the frame as an imperfect lens would: curvature, decentering and prism in 16.16 fixed point about the
// frame's centre. The prism and the decentering named vertical move across and those named horizontal move
// down, and both coordinates take the same sum of squares: old projects depend on it.
#include "filters/lens/kept_positions.h"
#include "filters/lens/lens_mapping.h"
#include "filters/lens/sampler.h"
#include "framework/filter.h"
#include "framework/registration_order.h"

#include <algorithm>
#include <cstring>
#include <optional>

namespace LensDistortion {
namespace {

struct Settings {
    std::int16_t curvature;  ///< -100 to 100, like all that follow.
    std::int16_t verticalDecentering;
    std::int16_t horizontalDecentering;
    std::int16_t verticalPrism;
    std::int16_t horizontalPrism;
    std::uint8_t fillAlpha;   ///< 0 fills with transparent black instead of the colour.
    std::uint32_t fillColor;  ///< 0x00BBGGRR.

    template <class Visit>
    void fields(Visit&& visit) {
        visit(curvature);
        visit(verticalDecentering);
        visit(horizontalDecentering);
        visit(verticalPrism);
        visit(horizontalPrism);
        visit(fillAlpha);
        visit(fillColor);
    }
};

const LensDistortionKernels& kernels = lensDistortionKernelsTables.chosen();

KeptPositions keptPositions;

/// The first row and column of a lens that bends nothing: places are moved into the picture, whose border
/// does not fade there.
void renderUnfadedEdge(const LensMapping& mapping, const SampledPicture& picture,
                       const FrameView& destination) {
    const std::int64_t width = std::min<std::int64_t>(picture.width, destination.width());
    const std::int64_t rows = std::min<std::int64_t>(picture.height, destination.height());
    const auto renderPixel = [&](std::int64_t column, std::int64_t row) {
        std::int32_t x, y;
        mapping.position(mapping.limited(mapping.place(mapping.column(column), mapping.row(row))), &x, &y);
        const std::uint32_t pixel = x < 0 ? picture.fill : sampleWithEdgeFill(picture, x, y, false);
        std::memcpy(destination.pixels + (destination.height() - 1 - row) * destination.rowBytes +
                        bytesPerPixel * column,
                    &pixel, sizeof pixel);
    };
    if (rows <= 0 || width <= 0) return;
    for (std::int64_t column = 0; column < width; ++column) renderPixel(column, 0);
    for (std::int64_t row = 1; row < rows; ++row) renderPixel(0, row);
}

void distort(FrameBuffer* source, const FrameView& destination, const Settings& settings,
             const LensSteps& steps) {
    const FrameView frame = frameThroughPixKit(source);
    if (frame.width() <= 0 || frame.height() <= 0) return;
    const Lens lens{.curvature = Lens::scaled(settings.curvature, 0.01),
                    .verticalDecentering = Lens::scaled(settings.verticalDecentering, 0.005),
                    .horizontalDecentering = Lens::scaled(settings.horizontalDecentering, 0.005),
                    .verticalPrism = Lens::scaled(settings.verticalPrism, 0.01),
                    .horizontalPrism = Lens::scaled(settings.horizontalPrism, 0.01)};
    const LensMapping mapping(frame, lens, steps);
    std::uint32_t fill = 0;
    std::optional<SoftenedCopy> copy;
    if (settings.fillAlpha != 0) {
        fill = fillPixel(settings.fillColor);
        // Nothing samples the copy. Without memory for it the destination stays as it was, which is kept.
        copy.emplace(source);
        if (copy->get() == nullptr) return;
    }
    const SampledPicture picture = sampledPicture(frame, fill);
    if (mapping.fitsKernels()) {
        const LensFrame shared = mapping.forKernels();
        const auto makeTile = [&](std::int32_t first, std::int32_t columns) {
            return [&, offsets = TileColumns(mapping, first, columns), columns](
                       std::int32_t row, std::int32_t* x, std::int32_t* y) {
                kernels.place(shared, offsets.forKernels(), rowForKernels(mapping.row(row)), x, y, columns);
            };
        };
        const SampledSize size(picture, destination);
        if (size.columns <= 0 || size.rows <= 0) return;
        const auto makeAll = [&](Positions& positions) {
            shareRows(size.rows, [&](std::int32_t begin, std::int32_t end) {
                forEachTile(size.columns, makeTile, [&](const auto& place, std::int32_t first, std::int32_t) {
                    for (std::int32_t row = begin; row < end; ++row) {
                        place(row, positions.x(row) + first, positions.y(row) + first);
                    }
                });
            });
        };
        if (const auto kept = keptPositions.find({mapping, size.columns, size.rows}, makeAll)) {
            shareRows(size.rows, [&](std::int32_t begin, std::int32_t end) {
                for (std::int32_t row = begin; row < end; ++row) {
                    renderSampledRow(picture, destination, row, 0, size.columns, kept->x(row), kept->y(row));
                }
            });
        } else {
            renderSampled(picture, destination, makeTile);
        }
    } else {
        renderSampled(picture, destination, [&](std::int32_t first, std::int32_t columns) {
            return [&, first, columns](std::int32_t row, std::int32_t* x, std::int32_t* y) {
                const Offset rowOffset = mapping.row(row);
                for (std::int32_t i = 0; i < columns; ++i) {
                    mapping.position(mapping.place(mapping.column(first + i), rowOffset), x + i, y + i);
                }
            };
        });
    }
    if (lens.neutral()) renderUnfadedEdge(mapping, picture, destination);
}

std::int32_t render(const FilterInvocation& invocation, const Settings& settings) {
    distort(invocation.sourceFrame, frameThroughPixKit(invocation.destFrame), settings,
            lensSteps(invocation.fieldFlags));
    return 0;
}

constexpr FilterDeclaration<Settings> filter{
    .id = 10034,
    .initialSettings = {0, 0, 0, 0, 0, 1, 0x00FFFFFF},
    .render = render,
};

}  // namespace

void Register(VSK::PluginRegistry& registry) { registerFilter<filter>(registry); }

}  // namespace LensDistortion
