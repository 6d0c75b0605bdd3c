// SPDX-License-Identifier: MIT
// A television that loses horizontal hold: rows are rotated sideways, each further than the one before.
#include "filters/color/horizontal_hold.h"

#include "framework/filter.h"
#include "framework/frame_view.h"
#include "framework/registration_order.h"
#include "framework/row_copy_kernels.h"

#include <algorithm>

namespace HorizontalHold {
namespace {

const RowCopyKernels& kernels = rowCopyKernelsTables.chosen();

/// The step from row to row, 16.16, on its way from the first value to the last.
std::int64_t rowStep(const Settings& settings, const ClipPosition& position) {
    const double progress =
        position.duration == 0 ? 0 : static_cast<double>(position.time) / position.duration;
    const double change = progress * (static_cast<double>(settings.endStep) - settings.offset);
    constexpr double limit = 2147483647;
    return static_cast<std::int64_t>(std::clamp(change, -limit, limit)) + settings.offset;
}

/// The shift that grows from row to row. It is kept inside the row by one correction each time, not by a
/// modulo, and counted in bytes of 16 bits; old projects depend on how both go wrong.
class RowShift {
public:
    RowShift(std::int64_t step, std::int64_t width, int multiplier)
        : step_(step), row_(width << 16), width_(width), multiplier_(multiplier) {}

    /// In pixels, 0 to the width - 1.
    std::int64_t pixels() const { return pixels_; }

    void advance() {
        sum_ = wrapped(sum_ + step_);
        if (sum_ < 0) sum_ = wrapped(sum_ + row_);
        if (sum_ * multiplier_ > row_) sum_ = wrapped(sum_ - row_ / multiplier_);
        const auto bytes = static_cast<std::int16_t>((sum_ >> 16) * multiplier_ * bytesPerPixel);
        pixels_ = bytes / bytesPerPixel % width_;
        if (pixels_ < 0) pixels_ += width_;
    }

private:
    static std::int64_t wrapped(std::int64_t value) { return static_cast<std::int32_t>(value); }

    std::int64_t step_;
    std::int64_t row_;
    std::int64_t width_;
    int multiplier_;
    std::int64_t sum_ = 0;
    std::int64_t pixels_ = 0;
};

int rowMultiplier(std::uint16_t fieldFlags) {
    const bool halfHeight = (fieldFlags & (FieldFlagUpper | FieldFlagLower | FieldFlagHalfHeight)) != 0;
    return halfHeight && (fieldFlags & FieldFlagHalfWidth) == 0 ? 2 : 1;
}

std::int32_t render(const FilterInvocation& invocation, const Settings& settings) {
    shiftRows(invocation.sourceFrame, invocation.destFrame, settings,
              {invocation.frameTime, invocation.clipDuration}, rowMultiplier(invocation.fieldFlags));
    return 0;
}

constexpr FilterDeclaration<Settings> filter{
    .id = 10031,
    .initialSettings = {0, 0},
    .workRecord = {.bytes = workRecordBytes},
    .render = render,
    .dialog = {.templateId = 1900, .procedure = dialogProcedure},
};

}  // namespace

void shiftRows(FrameBuffer* sourceFrame, FrameBuffer* destinationFrame, const Settings& settings,
               const ClipPosition& position, int rowMultiplier) {
    const FrameView source = frameThroughPixKit(sourceFrame);
    const FrameView destination = frameThroughPixKit(destinationFrame);
    const std::int64_t width = destination.width();
    if (width <= 0) return;
    const FrameExtent sourceExtent(source);
    RowShift shift(rowStep(settings, position), width, rowMultiplier);
    for (std::int64_t row = 0; row < destination.height(); ++row, shift.advance()) {
        // Both frames are stepped by the destination's row bytes; rows that the source does not have stay.
        const std::int64_t offset = row * destination.rowBytes;
        if (sourceExtent.fitting(offset, width, bytesPerPixel) < width) continue;
        const std::uint8_t* from = source.pixels + offset;
        std::uint8_t* to = destination.pixels + offset;
        const std::int64_t head = bytesPerPixel * shift.pixels();
        const std::int64_t tail = bytesPerPixel * width - head;
        kernels.copy(from + head, to, tail);
        kernels.copy(from, to + tail, head);
    }
}

void Register(VSK::PluginRegistry& registry) { registerFilter<filter>(registry); }

}  // namespace HorizontalHold
