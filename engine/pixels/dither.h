// SPDX-License-Identifier: MIT
#ifndef VIREO_ENGINE_PIXELS_DITHER_H
#define VIREO_ENGINE_PIXELS_DITHER_H

#include <cstddef>
#include <vector>

namespace vireo {

/// Thresholds of an ordered dither, one row of the picture's width for each of eight rows of the pattern; or
/// of rounding, where `dithers` is not set. They are added before cutting to whole numbers.
class DitherRows {
public:
    DitherRows(int width, bool dithers) : width_(width), values_(8 * static_cast<std::size_t>(width), 0.5F) {
        if (!dithers) return;
        for (int y = 0; y < 8; ++y) {
            for (int x = 0; x < width; ++x) values_[index(y) + static_cast<std::size_t>(x)] = threshold(x, y);
        }
    }

    /// For a row of the picture, counted from the top.
    const float* row(int y) const { return values_.data() + index(y & 7); }

private:
    std::size_t index(int y) const { return static_cast<std::size_t>(y) * static_cast<std::size_t>(width_); }

    /// The recursive Bayer pattern, in 64 steps from 0 to below 1.
    static float threshold(int x, int y) {
        int order = 0;
        for (int bit = 0; bit < 3; ++bit)
            order = order << 2 | ((x >> bit ^ y >> bit) & 1) << 1 | (y >> bit & 1);
        return (static_cast<float>(order) + 0.5F) / 64;
    }

    int width_;
    std::vector<float> values_;
};

}  // namespace vireo

#endif
