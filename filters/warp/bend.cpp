// SPDX-License-Identifier: MIT
// A wave that travels across the frame shortens every column at both ends and stretches what is left over the
// whole column; a second wave does the same to the rows. What is not covered shows the fill colour.
#include "filters/warp/bend.h"

#include "framework/filter.h"
#include "framework/module_resources.h"
#include "framework/registration_order.h"
#include "framework/vpix_suites.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>

namespace Bend {
namespace {

constexpr AxisSettings initialAxis{Backward, Sine, 15, 4, 50};

constexpr int waveCount = 4;
constexpr int firstWaveId = 4000;  // Of the tables' resources, in the order of the waves.
constexpr int waveLength = 4000;
constexpr int waveHeight = 32000;

/// One period, -waveHeight to waveHeight.
using WaveTable = std::array<std::int16_t, waveLength>;

/// Insets of a line's two ends, in 1/256 percent of its length, one for each column or row.
using Insets = std::unique_ptr<std::int32_t[]>;

/// A wave's table, or null where the module has none.
const WaveTable* waveTable(std::uint16_t wave) {
    struct Tables {
        WaveTable tables[waveCount];
        bool found[waveCount];

        Tables() {
            for (int i = 0; i < waveCount; ++i) {
                std::size_t size = 0;
                const void* bytes =
                    LoadModuleResource(u"LOOKUP", static_cast<std::uint16_t>(firstWaveId + i), &size);
                found[i] = bytes != nullptr && size >= sizeof tables[i];
                if (found[i]) std::memcpy(&tables[i], bytes, sizeof tables[i]);
                if (bytes != nullptr) ReleaseModuleResource(bytes);
            }
        }
    };
    static const Tables loaded;
    return wave < waveCount && loaded.found[wave] ? &loaded.tables[wave] : nullptr;
}

/// The inset at a phase of the wave. 64 bits hold the products of any settings.
std::int32_t insetAt(const WaveTable& table, std::int64_t phase, std::int64_t period,
                     std::int64_t amplitude) {
    std::int64_t index = phase % period * waveLength / period;
    if (index < 0) index += waveLength;
    const std::int64_t swing = amplitude * table[static_cast<std::size_t>(index)] / waveHeight;
    return static_cast<std::int32_t>(amplitude + swing);
}

void fillInsets(std::int32_t* insets, std::int64_t count, const AxisSettings& axis, std::int32_t step) {
    const WaveTable* table = waveTable(axis.wave);
    const auto period = static_cast<std::int16_t>(std::int64_t{axis.width} * count / 100);
    if (table == nullptr || period == 0) return;
    const std::int64_t amplitude = 256 * (axis.intensity / 2);
    const std::int64_t phase = std::int64_t{axis.rate} * step / 4;
    const auto sample = [&](std::int64_t i) { return insetAt(*table, phase + i, period, amplitude); };

    // Towards the centre or from it, the halves mirror each other. The line in the middle of an odd number,
    // or the last, keeps no inset.
    const std::int64_t half = count / 2;
    switch (axis.direction) {
        case Backward:
            for (std::int64_t i = 0; i < count; ++i) insets[i] = sample(i);
            break;
        case Forward:
            for (std::int64_t i = 0; i < count; ++i) insets[count - 1 - i] = sample(i);
            break;
        case In:
            for (std::int64_t i = 0; i < half; ++i) insets[half + i] = insets[half - 1 - i] = sample(i);
            break;
        case Out:
            for (std::int64_t i = 0; i < half; ++i) insets[i] = insets[count - 1 - i] = sample(i);
            break;
        default: break;
    }
}

/// The insets of a half, or null where it is not active.
Insets insetsOf(const AxisSettings& axis, std::int64_t count, std::int32_t step) {
    if (axis.intensity == 0 || count < 0) return nullptr;
    Insets insets(new (std::nothrow) std::int32_t[static_cast<std::size_t>(count)]());
    if (insets != nullptr) fillInsets(insets.get(), count, axis, step);
    return insets;
}

/// An inset in pixels of a line of `length`.
std::int32_t insetInPixels(std::int32_t inset, std::int64_t length) {
    return static_cast<std::int16_t>(inset * length / 25600);
}

/// Calls line(index, inset) for the lines of [begin, end). Lines are numbered from 0 even where the bounds
/// begin elsewhere, so the insets may end early.
template <class Line>
void forEachLine(const Insets& insets, std::int64_t count, std::int32_t begin, std::int32_t end,
                 Line&& line) {
    for (std::int32_t i = std::max(begin, 0); i < end; ++i) line(i, i < count ? insets[i] : 0);
}

/// Which side of the bounds moves by `distance`. Bounds at the ends of the number range wrap round to an
/// inverted rectangle, of which nothing is copied.
std::int32_t moved(std::int32_t side, std::int32_t distance) {
    return static_cast<std::int32_t>(std::int64_t{side} + distance);
}

FrameRect boundsOf(FrameBuffer* frame) {
    FrameRect bounds;
    vpixGetBounds(frame, &bounds);
    return bounds;
}

void fill(FrameBuffer* frame, std::uint32_t color) {
    const FrameRect bounds = boundsOf(frame);
    vpixFillRect(frame, &bounds, color);
}

/// Copies rectangles onto others, many in one call where the host takes them so.
class CopyQueue {
public:
    CopyQueue(FrameBuffer* source, FrameBuffer* destination, std::uint32_t mode)
        : source_(source), destination_(destination), mode_(mode) {}
    CopyQueue(const CopyQueue&) = delete;
    CopyQueue& operator=(const CopyQueue&) = delete;
    ~CopyQueue() { copyAll(); }

    void add(const FrameRect& from, const FrameRect& to) {
        if (count_ == capacity) copyAll();
        from_[count_] = from;
        to_[count_] = to;
        ++count_;
    }

private:
    static constexpr std::int32_t capacity = 512;

    void copyAll() {
        if (const VPixBatchSuite* const suite = FindVPixBatchSuite()) {
            suite->copy.get()(source_, destination_, from_, to_, count_, mode_);
        } else {
            for (std::int32_t i = 0; i < count_; ++i) {
                vpixCopy(source_, destination_, &from_[i], &to_[i], mode_);
            }
        }
        count_ = 0;
    }

    FrameBuffer* source_;
    FrameBuffer* destination_;
    std::uint32_t mode_;
    std::int32_t count_ = 0;
    FrameRect from_[capacity];
    FrameRect to_[capacity];
};

void bendColumns(FrameBuffer* source, FrameBuffer* destination, const FrameRect& bounds, const Insets& insets,
                 std::uint32_t fillColor) {
    fill(destination, fillColor);
    const std::int64_t height = std::int64_t{bounds.bottom} - bounds.top;
    const std::int64_t width = std::int64_t{bounds.right} - bounds.left;
    CopyQueue copies(source, destination, VPixCopyReplaceColumns);
    forEachLine(insets, width, bounds.left, bounds.right, [&](std::int32_t x, std::int32_t inset) {
        const std::int32_t pixels = insetInPixels(inset, height);
        copies.add({x, moved(bounds.top, pixels), x + 1, moved(bounds.bottom, -pixels)},
                   {x, bounds.top, x + 1, bounds.bottom});
    });
}

void bendRows(FrameBuffer* source, FrameBuffer* destination, const FrameRect& bounds, const Insets& insets,
              std::uint32_t fillColor) {
    fill(destination, fillColor);
    const std::int64_t height = std::int64_t{bounds.bottom} - bounds.top;
    const std::int64_t width = std::int64_t{bounds.right} - bounds.left;
    CopyQueue copies(source, destination, VPixCopyReplace);
    forEachLine(insets, height, bounds.top, bounds.bottom, [&](std::int32_t y, std::int32_t inset) {
        const std::int32_t pixels = insetInPixels(inset, width);
        copies.add({moved(bounds.left, pixels), y, moved(bounds.right, -pixels), y + 1},
                   {bounds.left, y, bounds.right, y + 1});
    });
}

std::int32_t stepOf(const FilterInvocation& invocation) {
    const auto duration = static_cast<std::int32_t>(invocation.timeBase->fieldDuration);
    if (duration == 0) return 0;
    return static_cast<std::int32_t>(std::int64_t{static_cast<std::int32_t>(invocation.frameTime)} /
                                     duration);
}

std::int32_t render(const FilterInvocation& invocation, const Settings& settings) {
    const WorkBuffer work = newWorkBuffer(invocation);
    if (work == nullptr) return 1;
    bend(invocation.sourceFrame, invocation.destFrame, work.get(), stepOf(invocation), settings);
    return 0;
}

constexpr FilterDeclaration<Settings> filter{
    .id = 10004,
    .initialSettings = {initialAxis, initialAxis, 0x00FFFFFF},
    .workRecord = {.bytes = workRecordBytes, .inContext = true},
    .render = render,
    .dialog = {.templateId = 1300, .procedure = dialogProcedure, .resultIsWord = true},
};

}  // namespace

WorkBuffer newWorkBuffer(const FilterInvocation& invocation) {
    if (invocation.sourceFrame == nullptr) return nullptr;
    const FrameRect bounds = boundsOf(invocation.sourceFrame);
    return WorkBuffer(vpixNew(&bounds));
}

void bend(FrameBuffer* source, FrameBuffer* destination, FrameBuffer* work, std::int32_t step,
          const Settings& settings) {
    const FrameRect bounds = boundsOf(source);
    const std::uint32_t fillColor = settings.fillColor;
    const Insets columns = insetsOf(settings.horizontal, std::int64_t{bounds.right} - bounds.left, step);
    const Insets rows = insetsOf(settings.vertical, std::int64_t{bounds.bottom} - bounds.top, step);

    if (columns == nullptr && rows == nullptr) {
        vpixCopy(source, destination, &bounds, &bounds, VPixCopyReplace);
    } else if (rows == nullptr) {
        bendColumns(source, destination, bounds, columns, fillColor);
    } else if (columns == nullptr) {
        bendRows(source, destination, bounds, rows, fillColor);
    } else if (work != nullptr) {
        bendColumns(source, work, bounds, columns, fillColor);
        bendRows(work, destination, bounds, rows, fillColor);
    } else {
        vpixCopy(source, destination, &bounds, &bounds, VPixCopyReplace);
        bendColumns(destination, source, bounds, columns, fillColor);
        bendRows(source, destination, bounds, rows, fillColor);
    }
}

void Register(VSK::PluginRegistry& registry) { registerFilter<filter>(registry); }

}  // namespace Bend
