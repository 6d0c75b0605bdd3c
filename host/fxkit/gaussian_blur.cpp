// SPDX-License-Identifier: MIT
#include "host/fxkit/gaussian_blur.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <numbers>
#include <vector>

namespace FxKit {
namespace {

// Beyond this the picture is a speck in the window and the result stays as it is.
constexpr double longestReach = 1 << 24;

std::int64_t wholeReach(double reach) {
    return reach >= 1 ? static_cast<std::int64_t>(std::min(reach, longestReach)) : 0;
}

/// A direction of the blur, with the table it points to.
class Axis {
public:
    /// The results carry `scale` times the weight of the pixels.
    Axis(std::int64_t reach, std::int64_t length, double scale) {
        axis_.reach = reach;
        axis_.length = length;
        setWeights(scale);
        setStart();
    }

    const BlurAxis& operator*() const { return axis_; }

private:
    double frequency(int cosine) const {
        return 2 * std::numbers::pi * cosine / static_cast<double>(2 * axis_.reach + 1);
    }

    /// Places are counted in units of the cosine at the window's ends: what enters and leaves then drives
    /// every pendulum alike.
    double unit(int cosine) const { return std::cos(frequency(cosine) * static_cast<double>(axis_.reach)); }

    void setWeights(double scale) {
        // The weights depend on the shape alone, which no longer changes beyond this reach.
        const auto reach = static_cast<int>(std::min<std::int64_t>(axis_.reach, 4096));
        double sum = 1;
        double cosineSums[1 + blurCosines] = {1, 1, 1, 1};
        for (int i = 1; i <= reach; ++i) {
            const double distance = static_cast<double>(i) / reach;
            const double weight = 2 * std::exp(-4.5 * distance * distance);
            sum += weight;
            for (int k = 1; k <= blurCosines; ++k) {
                cosineSums[k] += weight * std::cos(2 * std::numbers::pi * k * i / (2 * reach + 1));
            }
        }
        const double perPixel = scale / static_cast<double>(2 * axis_.reach + 1);
        axis_.weights[0] = static_cast<float>(perPixel);
        axis_.half = static_cast<float>(0.5 / perPixel);
        for (int k = 1; k <= blurCosines; ++k) {
            // A window this small has no room for the cosine.
            const double amplitude = k <= reach ? 2 * cosineSums[k] / sum : 0;
            axis_.weights[k] = static_cast<float>(perPixel * amplitude * unit(k));
            axis_.pull[k - 1] = static_cast<float>(2 - 2 * std::cos(frequency(k)));
        }
    }

    /// The first pixel stands for all before it, the last in reach for all behind it.
    void setStart() {
        const std::int64_t last = std::min(axis_.reach, axis_.length - 1);
        start_.resize(static_cast<std::size_t>(last) + 1);
        for (BlurState& pixel : start_) pixel.values[0] = 1;
        start_.front().values[0] += static_cast<float>(axis_.reach);
        start_.back().values[0] += static_cast<float>(axis_.reach - last);
        for (int k = 1; k <= blurCosines; ++k) {
            const double w = frequency(k);
            // The cosines of the whole window add up to 0, those of either half to -1/2.
            double placesLeft = -0.5;
            double here = 1;
            for (std::int64_t x = 0; x <= last; ++x) {
                const std::int64_t nextX = x == last ? axis_.reach + 1 : x + 1;
                const double next = std::cos(w * static_cast<double>(nextX));
                double place = here;
                double speed = here - next;
                if (x == 0) {
                    place -= 0.5;
                    speed += unit(k) - here;
                } else {
                    placesLeft -= here;
                }
                if (x == last) place += placesLeft;
                start_[x].values[2 * k - 1] = static_cast<float>(place / unit(k));
                start_[x].values[2 * k] = static_cast<float>(speed / unit(k));
                here = next;
            }
        }
        axis_.start = start_.data();
        axis_.startCount = last + 1;
    }

    BlurAxis axis_;
    std::vector<BlurState> start_;
};

void copyRows(const BlurFrame& frame) {
    for (std::int64_t y = 0; y < frame.height; ++y) {
        std::memmove(frame.destination + y * frame.destinationRowBytes,
                     frame.source + y * frame.sourceRowBytes, static_cast<std::size_t>(4 * frame.width));
    }
}

/// Blurs between pictures that lie apart. The source's rows are readable for at least a strip.
///
/// Bands of rows are blurred down into a block that holds them column by column and stays in the cache, then
/// across from there: both directions are the same walk.
void blurApart(const BlurKernels& kernels, const BlurFrame& frame, const BlurAxis& down,
               const BlurAxis& across) {
    constexpr std::int64_t bandRows = 32;
    constexpr std::ptrdiff_t column = 4 * bandRows;
    const std::int64_t strip = kernels.stripPixels;
    const std::int64_t width = std::max(frame.width, strip);
    const std::int64_t strips = (width + strip - 1) / strip;
    const std::int64_t stateSize = blurStateValues * 4 * strip;
    std::vector<float> statesDown(static_cast<std::size_t>(stateSize * strips));
    std::vector<float> stateAcross(static_cast<std::size_t>(stateSize));
    std::vector<std::int16_t> band(static_cast<std::size_t>(column * width));

    for (std::int64_t y = 0; y < frame.height; y += bandRows) {
        const std::int64_t rows = std::min(bandRows, frame.height - y);
        for (std::int64_t s = 0; s < strips; ++s) {
            // The last strip laps over its neighbour.
            const std::int64_t x = std::min(s * strip, width - strip);
            const std::uint8_t* top = frame.source + 4 * x;
            float* state = statesDown.data() + s * stateSize;
            if (y == 0) kernels.startBytes(down, top, frame.sourceRowBytes, state);
            kernels.walkBytes(down, top, frame.sourceRowBytes, y, rows, state, band.data() + x * column,
                              column, static_cast<int>(strip));
        }
        for (std::int64_t row = 0; row < rows; row += strip) {
            const std::int16_t* left = band.data() + 4 * row;
            kernels.startFixed(across, left, column, stateAcross.data());
            kernels.walkFixed(across, left, column, 0, frame.width, stateAcross.data(),
                              frame.destination + (y + row) * frame.destinationRowBytes,
                              frame.destinationRowBytes, static_cast<int>(std::min(strip, rows - row)));
        }
    }
}

struct AddressRange {
    std::uintptr_t begin;
    std::uintptr_t end;
};

AddressRange addresses(const std::uint8_t* pixels, std::int64_t rowBytes, const BlurFrame& frame) {
    const auto first = reinterpret_cast<std::uintptr_t>(pixels);
    const auto last = first + static_cast<std::uintptr_t>((frame.height - 1) * rowBytes);
    return {std::min(first, last), std::max(first, last) + static_cast<std::uintptr_t>(4 * frame.width)};
}

bool apart(const BlurFrame& frame) {
    const AddressRange source = addresses(frame.source, frame.sourceRowBytes, frame);
    const AddressRange destination = addresses(frame.destination, frame.destinationRowBytes, frame);
    return source.end <= destination.begin || destination.end <= source.begin;
}

}  // namespace

void gaussianBlur(const BlurKernels& kernels, const BlurFrame& frame, double reachAcross, double reachDown) {
    if (frame.width <= 0 || frame.height <= 0) return;
    const std::int64_t across = wholeReach(reachAcross);
    const std::int64_t down = wholeReach(reachDown);
    if (across == 0 && down == 0) return copyRows(frame);
    try {
        const Axis axisDown(down, frame.height, blurFixedOne);
        const Axis axisAcross(across, frame.width, 1.0 / blurFixedOne);
        if (frame.width >= kernels.stripPixels && apart(frame)) {
            return blurApart(kernels, frame, *axisDown, *axisAcross);
        }
        BlurFrame aside = frame;
        aside.sourceRowBytes = 4 * std::max<std::int64_t>(frame.width, kernels.stripPixels);
        std::vector<std::uint8_t> copy(static_cast<std::size_t>(aside.sourceRowBytes * frame.height));
        aside.source = copy.data();
        copyRows({frame.source, frame.sourceRowBytes, copy.data(), aside.sourceRowBytes, frame.width,
                  frame.height});
        blurApart(kernels, aside, *axisDown, *axisAcross);
    } catch (const std::bad_alloc&) {
        copyRows(frame);
    }
}

}  // namespace FxKit
