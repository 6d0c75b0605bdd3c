// SPDX-License-Identifier: MIT
// Where a lens takes a pixel from, in 16.16 fixed point about the frame's centre. The prism and the
// decentering named vertical move across and those named horizontal move down, and both coordinates take the
// same sum of squares: old projects depend on it.
#ifndef VIREO_FILTERS_LENS_LENS_MAPPING_H
#define VIREO_FILTERS_LENS_LENS_MAPPING_H

#include "filters/lens/fixed_point.h"
#include "filters/lens/lens_distortion_kernels.h"
#include "filters/lens/sampler.h"

#include <algorithm>
#include <cstdlib>

namespace LensDistortion {

constexpr std::int64_t fixed(std::int64_t whole) { return whole * fixedOne; }

/// The five settings in 16.16.
struct Lens {
    std::int64_t curvature;
    std::int64_t verticalDecentering;
    std::int64_t horizontalDecentering;
    std::int64_t verticalPrism;
    std::int64_t horizontalPrism;

    bool operator==(const Lens&) const = default;

    bool neutral() const { return largest() == 0; }

    std::int64_t largest() const {
        return std::max({std::abs(curvature), std::abs(verticalDecentering), std::abs(horizontalDecentering),
                         std::abs(verticalPrism), std::abs(horizontalPrism)});
    }

    static std::int64_t scaled(std::int16_t value, double unit) {
        return static_cast<std::int64_t>(value * unit * fixedOne);
    }
};

/// What depends on the distance from the centre along one axis.
struct Offset {
    std::int64_t pixels;
    std::int64_t tenth;
    std::int64_t hundredthSquared;
    std::int64_t rounded;
    std::int64_t curved;
};

/// A place in the picture, 16.16.
struct Place {
    std::int64_t x;
    std::int64_t y;
};

/// The rule itself, pixel by pixel.
class LensMapping {
public:
    LensMapping(const FrameView& source, const Lens& lens, const LensSteps& steps)
        : lens_(lens),
          steps_(steps),
          width_(source.width() * steps.x),
          height_(source.height() * steps.y),
          radius_(fixedRoot(square(width_ / 2) + square(height_ / 2)) / fixedOne),
          norm_(fixedMul(fixedDiv(fixed(height_ / 2), fixed(10)), fixedDiv(fixed(width_ / 2), fixed(10)))),
          xEnd_(fixed(std::min<std::int64_t>(source.bounds.right, source.width()))),
          yEnd_(fixed(std::min<std::int64_t>(source.bounds.bottom, source.height()))) {}

    bool operator==(const LensMapping&) const = default;

    Offset column(std::int64_t index) const { return offset(index * steps_.x - width_ / 2); }
    Offset row(std::int64_t index) const { return offset(index * steps_.y - height_ / 2); }

    Place place(const Offset& column, const Offset& row) const {
        const std::int64_t radius = fixedRoot(square(column.pixels) + square(row.pixels));
        const std::int64_t relativeRadius = fixedDiv(radius, fixed(radius_));
        const std::int64_t product = fixedMul(fixedMul(column.tenth, row.tenth), fixed(2));
        const std::int64_t squares =
            fixedDiv(row.hundredthSquared + fixedMul(column.hundredthSquared, fixed(3)), fixed(radius_));
        const auto along = [&](const Offset& offset, std::int64_t own, std::int64_t other,
                               std::int64_t prism) {
            return fixedDiv(fixedMul(product, other), norm_) + fixedMul(offset.curved, relativeRadius) +
                   fixedMul(fixedMul(own, squares), fixed(10000)) + fixedMul(prism, radius) + offset.rounded;
        };
        return {along(column, lens_.verticalDecentering, lens_.horizontalDecentering, lens_.verticalPrism) +
                    fixed(width_ / 2),
                along(row, lens_.horizontalDecentering, lens_.verticalDecentering, lens_.horizontalPrism) +
                    fixed(height_ / 2)};
    }

    Place limited(const Place& place) const {
        return {std::clamp<std::int64_t>(place.x, 0, fixed(width_ - 1)),
                std::clamp<std::int64_t>(place.y, 0, fixed(height_ - 1))};
    }

    /// As the sampler takes it: in 1/256 pixel, or -1 outside the source.
    void position(const Place& place, std::int32_t* x, std::int32_t* y) const {
        const std::int64_t sourceX = fixedDiv(place.x, fixed(steps_.x));
        const std::int64_t sourceY = fixedDiv(place.y, fixed(steps_.y));
        const bool inside = sourceX >= 0 && sourceX < xEnd_ && sourceY >= 0 && sourceY < yEnd_;
        *x = inside ? static_cast<std::int32_t>(sourceX / 256) : -1;
        *y = inside ? static_cast<std::int32_t>(sourceY / 256) : -1;
    }

    /// Whether the kernels' arithmetic is exact: for any settings in range and any frame of up to 7680 x
    /// 4320.
    bool fitsKernels() const {
        return square(width_ / 2) + square(height_ / 2) < 1 << 25 && radius_ > 0 && norm_ > 0 &&
               lens_.largest() <= fixedOne;
    }

    LensFrame forKernels() const {
        const auto unit = [](std::int64_t value) { return static_cast<double>(value) / fixedOne; };
        const auto value = [](std::int64_t number) { return static_cast<double>(number); };
        return {.horizontalDecentering = unit(lens_.horizontalDecentering),
                .verticalDecentering = unit(lens_.verticalDecentering),
                .horizontalPrism = unit(lens_.horizontalPrism),
                .verticalPrism = unit(lens_.verticalPrism),
                .perRadius = lensReciprocal(value(radius_)),
                .perNorm = lensReciprocal(value(norm_)) * fixedOne,
                .halfWidth = value(fixed(width_ / 2)),
                .halfHeight = value(fixed(height_ / 2)),
                .xStep = value(steps_.x),
                .yStep = value(steps_.y),
                .xEnd = value(xEnd_ * steps_.x),
                .yEnd = value(yEnd_ * steps_.y)};
    }

private:
    static std::int64_t square(std::int64_t value) { return value * value; }

    Offset offset(std::int64_t pixels) const {
        const std::int64_t tenth = fixedDiv(fixed(pixels), fixed(10));
        const std::int64_t hundredth = fixedDiv(tenth, fixed(10));
        const std::int64_t rounded = fixedMul(hundredth, fixed(100));
        return {pixels, tenth, fixedMul(hundredth, hundredth), rounded, fixedMul(lens_.curvature, rounded)};
    }

    Lens lens_;
    LensSteps steps_;
    std::int64_t width_;
    std::int64_t height_;
    std::int64_t radius_;  ///< In whole pixels.
    std::int64_t norm_;
    std::int64_t xEnd_;
    std::int64_t yEnd_;
};

/// Columns of a tile as the kernels take them.
class TileColumns {
public:
    TileColumns(const LensMapping& mapping, std::int32_t first, std::int32_t columns) {
        for (std::int32_t i = 0; i < columns; ++i) {
            const Offset offset = mapping.column(first + i);
            squared_[i] = static_cast<double>(offset.pixels * offset.pixels);
            tenth_[i] = static_cast<double>(offset.tenth);
            hundredthSquared_[i] = static_cast<double>(fixedMul(offset.hundredthSquared, fixed(3)));
            rounded_[i] = static_cast<double>(offset.rounded);
            curved_[i] = static_cast<double>(offset.curved);
        }
    }

    LensColumns forKernels() const { return {squared_, tenth_, hundredthSquared_, rounded_, curved_}; }

private:
    static_assert(tileWidth % lensColumnBlock == 0);
    double squared_[tileWidth] = {};
    double tenth_[tileWidth] = {};
    double hundredthSquared_[tileWidth] = {};
    double rounded_[tileWidth] = {};
    double curved_[tileWidth] = {};
};

inline LensOffset rowForKernels(const Offset& row) {
    const auto value = [](std::int64_t number) { return static_cast<double>(number); };
    return {value(row.pixels * row.pixels), value(row.tenth), value(row.hundredthSquared), value(row.rounded),
            value(row.curved)};
}

}  // namespace LensDistortion

#endif
