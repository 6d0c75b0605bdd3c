// SPDX-License-Identifier: MIT
// Copies the frame and fades its alpha toward the four edges. The bands meet along the diagonals.
#include "filters/basic/edge_feather_kernels.h"
#include "framework/filter.h"
#include "framework/frame_view.h"
#include "framework/registration_order.h"

#include <array>

namespace EdgeFeather {
namespace {

struct Settings {
    std::int16_t amount;
};

constexpr Settings initialSettings{4};

constexpr int widestBand = 32767 * 4 / 3;

const EdgeFeatherKernels& kernels = edgeFeatherKernelsTables.chosen();

/// The factors of a band `width` lines deep in hundredths, the outermost line first.
constexpr int factor(std::int64_t line, std::int64_t width) {
    return static_cast<int>(100 * (line + 1) / width);
}

/// How deep the bands reach, and how many columns the picture's own grid has for one row of the frame.
struct Bands {
    std::int64_t rows;
    std::int64_t columns;
    std::int64_t step;

    Bands(int amount, bool fieldMode)
        : columns(static_cast<std::int64_t>(amount * 4.0 / 3.0)), step(fieldMode ? 2 : 1) {
        rows = fieldMode ? columns / 2 : columns;
        if (rows == 0) rows = 1;
    }
};

class Feather {
public:
    Feather(const FrameView& frame, const Bands& bands)
        : frame_(frame), bands_(bands), width_(frame.width()), height_(frame.height()) {}

    void fadeTopAndBottom() {
        const std::int64_t rows = std::min(bands_.rows, height_);
        for (std::int64_t k = 0; k < rows; ++k) {
            fadeRow(k, k);
            fadeRow(height_ - 1 - k, k);
        }
    }

    /// In bands that overlap a pixel's outer line scales it first.
    void fadeLeftAndRight() {
        const std::int64_t columns = std::min(bands_.columns, width_);
        if (columns <= 0) return;
        for (std::int64_t c = 0; c < columns; ++c) {
            const auto value = static_cast<std::uint8_t>(factor(c, bands_.columns));
            outward_[static_cast<std::size_t>(c)] = value;
            inward_[static_cast<std::size_t>(columns - 1 - c)] = value;
        }
        const std::int64_t leftHalf = std::min(columns, (width_ + 1) / 2);
        const std::int64_t rightHalf = std::min(columns, width_ / 2);
        for (std::int64_t row = 1; row < height_; ++row) {
            const std::int64_t left = std::min(columns, leftColumns(row));
            const std::int64_t right = std::min(columns, rightColumns(row));
            fadeLeft(row, 0, std::min(left, leftHalf));
            fadeRight(row, 0, std::min(right, rightHalf), columns);
            fadeLeft(row, leftHalf, left);
            fadeRight(row, rightHalf, right, columns);
        }
    }

private:
    void fadeRow(std::int64_t row, std::int64_t k) {
        const std::int64_t inset = k * bands_.step;
        if (2 * inset >= width_) return;
        kernels.scaleAlpha(frame_.pixels + row * frame_.rowBytes + bytesPerPixel * inset, width_ - 2 * inset,
                           factor(k, bands_.rows));
    }

    std::uint8_t* pixel(std::int64_t column, std::int64_t row) const {
        return frame_.pixels + row * wholePixels(frame_.rowBytes) + bytesPerPixel * column;
    }

    /// Column c of the left band covers rows c / step + 1 to height - c / step - 2: how many columns cover a
    /// row.
    std::int64_t leftColumns(std::int64_t row) const {
        return std::max<std::int64_t>(0, bands_.step * std::min(row, height_ - 1 - row));
    }

    /// The right band goes on to row height - (c + 1) / step - 1. With step 2 its even columns thus cover one
    /// row more than the left band's, which the bottom band has scaled already; old projects depend on it.
    std::int64_t rightColumns(std::int64_t row) const {
        return std::min(bands_.step * row, bands_.step * (height_ - row) - 1);
    }

    void fadeLeft(std::int64_t row, std::int64_t begin, std::int64_t end) {
        if (begin < end) kernels.scaleAlphaByColumn(pixel(begin, row), end - begin, &outward_[index(begin)]);
    }

    void fadeRight(std::int64_t row, std::int64_t begin, std::int64_t end, std::int64_t columns) {
        if (begin < end) {
            kernels.scaleAlphaByColumn(pixel(width_ - end, row), end - begin, &inward_[index(columns - end)]);
        }
    }

    static std::size_t index(std::int64_t value) { return static_cast<std::size_t>(value); }

    FrameView frame_;
    Bands bands_;
    std::int64_t width_;
    std::int64_t height_;
    std::array<std::uint8_t, widestBand + 1> outward_;  ///< Factors of the columns from left to right.
    std::array<std::uint8_t, widestBand + 1> inward_;   ///< The same in reverse, for the right edge.
};

/// Exactly one of the two half-resolution kinds.
bool fieldMode(const FilterInvocation& invocation) {
    const bool halfWidth = (invocation.fieldFlags & FieldFlagHalfWidth) != 0;
    const bool halfHeight =
        (invocation.fieldFlags & (FieldFlagUpper | FieldFlagLower | FieldFlagHalfHeight)) != 0;
    return halfWidth != halfHeight;
}

std::int32_t render(const FilterInvocation& invocation, const Settings& settings) {
    FrameRect sourceBounds;
    vpixGetBounds(invocation.sourceFrame, &sourceBounds);
    const FrameView destination = frameThroughPixKit(invocation.destFrame);
    vpixCopy(invocation.sourceFrame, invocation.destFrame, &sourceBounds, &destination.bounds,
             VPixCopyReplaceColumns);

    const int amount = settings.amount;
    if (amount <= 0) return 0;
    Feather feather(destination, Bands(amount, fieldMode(invocation)));
    feather.fadeTopAndBottom();
    feather.fadeLeftAndRight();
    return 0;
}

constexpr FilterDeclaration<Settings> filter{
    .id = 10020,
    .initialSettings = initialSettings,
    .settingsWithoutHandle = Settings{10},
    // Unlike other filters this one starts anew.
    .renewed = [](const Settings&) { return initialSettings; },
    .render = render,
};

}  // namespace

void Register(VSK::PluginRegistry& registry) { registerFilter<filter>(registry); }

}  // namespace EdgeFeather
