// SPDX-License-Identifier: MIT
#include "app/render/measuring.h"

#include <cmath>
#include <limits>
#include <type_traits>
#include <vector>

namespace vireo {
namespace {

constexpr int window = 11;

std::array<double, window> gaussian() {
    constexpr double deviation = 1.5;
    std::array<double, window> weights{};
    double sum = 0;
    for (int i = 0; i < window; ++i) {
        const double x = i - window / 2;
        sum += weights[static_cast<std::size_t>(i)] = std::exp(-x * x / (2 * deviation * deviation));
    }
    for (double& weight : weights) weight /= sum;
    return weights;
}

/// Values in rows.
struct Plane {
    Plane(int wide, int high)
        : width(wide),
          height(high),
          values(static_cast<std::size_t>(wide) * static_cast<std::size_t>(high)) {}

    double* row(int y) { return values.data() + static_cast<std::ptrdiff_t>(y) * width; }
    const double* row(int y) const { return values.data() + static_cast<std::ptrdiff_t>(y) * width; }

    int width, height;
    std::vector<double> values;
};

template <class Channel>
constexpr double whole() {
    if constexpr (std::is_floating_point_v<Channel>) return 1;
    return std::numeric_limits<Channel>::max();
}

template <class Channel>
const Channel* channels(const Picture& picture, int y) {
    return reinterpret_cast<const Channel*>(picture.row(y));
}

template <class Channel>
Plane lumaOf(const Picture& picture) {
    Plane luma(picture.width(), picture.height());
    for (int y = 0; y < picture.height(); ++y) {
        const Channel* pixel = channels<Channel>(picture, y);
        double* to = luma.row(y);
        for (int x = 0; x < picture.width(); ++x, pixel += 4)
            to[x] = (0.299 * pixel[2] + 0.587 * pixel[1] + 0.114 * pixel[0]) / whole<Channel>();
    }
    return luma;
}

template <class Channel>
std::array<double, 4> squaredDifferences(const Picture& one, const Picture& other) {
    constexpr int order[] = {2, 1, 0, 3};  // red, green, blue, alpha
    std::array<double, 4> sums{};
    for (int y = 0; y < one.height(); ++y) {
        const Channel* a = channels<Channel>(one, y);
        const Channel* b = channels<Channel>(other, y);
        std::array<double, 4> row{};
        for (int x = 0; x < one.width(); ++x, a += 4, b += 4) {
            for (std::size_t i = 0; i < 4; ++i) {
                const double difference = static_cast<double>(a[order[i]]) - b[order[i]];
                row[i] += difference * difference;
            }
        }
        for (std::size_t i = 0; i < 4; ++i) sums[i] += row[i];
    }
    const double pixels = static_cast<double>(one.width()) * one.height();
    for (double& sum : sums) sum /= pixels * whole<Channel>() * whole<Channel>();
    return sums;
}

Plane product(const Plane& a, const Plane& b) {
    Plane result(a.width, a.height);
    for (std::size_t i = 0; i < a.values.size(); ++i) result.values[i] = a.values[i] * b.values[i];
    return result;
}

/// Weighted means over all windows that lie in the plane.
Plane windowMeans(const Plane& plane) {
    static const std::array<double, window> weights = gaussian();
    Plane across(plane.width - window + 1, plane.height);
    for (int y = 0; y < plane.height; ++y) {
        for (int i = 0; i < window; ++i) {
            const double* from = plane.row(y) + i;
            double* to = across.row(y);
            for (int x = 0; x < across.width; ++x) to[x] += weights[static_cast<std::size_t>(i)] * from[x];
        }
    }
    Plane means(across.width, plane.height - window + 1);
    for (int y = 0; y < means.height; ++y) {
        for (int i = 0; i < window; ++i) {
            const double* from = across.row(y + i);
            double* to = means.row(y);
            for (int x = 0; x < means.width; ++x) to[x] += weights[static_cast<std::size_t>(i)] * from[x];
        }
    }
    return means;
}

std::optional<double> similarityOf(const Plane& one, const Plane& other) {
    constexpr double c1 = 0.01 * 0.01, c2 = 0.03 * 0.03;
    if (one.width < window || one.height < window) return std::nullopt;
    const Plane meanOne = windowMeans(one), meanOther = windowMeans(other);
    const Plane squareOne = windowMeans(product(one, one)), squareOther = windowMeans(product(other, other));
    const Plane both = windowMeans(product(one, other));
    double sum = 0;
    for (std::size_t i = 0; i < both.values.size(); ++i) {
        const double a = meanOne.values[i], b = meanOther.values[i];
        const double spread = squareOne.values[i] - a * a + squareOther.values[i] - b * b;
        const double shared = both.values[i] - a * b;
        sum += (2 * a * b + c1) * (2 * shared + c2) / ((a * a + b * b + c1) * (spread + c2));
    }
    return sum / static_cast<double>(both.values.size());
}

template <class Channel>
PictureDistance measure(const Picture& one, const Picture& other) {
    return {squaredDifferences<Channel>(one, other),
            similarityOf(lumaOf<Channel>(one), lumaOf<Channel>(other))};
}

}  // namespace

PictureDistance distanceOf(const Picture& one, const Picture& other) {
    if (one.format() == formatBgraFloat) return measure<float>(one, other);
    if (one.format() == formatBgra16) return measure<std::uint16_t>(one, other);
    return measure<std::uint8_t>(one, other);
}

PictureDistance meanOf(std::span<const PictureDistance> distances) {
    PictureDistance mean;
    const auto count = static_cast<double>(distances.size());
    for (const PictureDistance& distance : distances) {
        for (std::size_t i = 0; i < mean.squared.size(); ++i) mean.squared[i] += distance.squared[i] / count;
        if (distance.similarity) mean.similarity = mean.similarity.value_or(0) + *distance.similarity / count;
    }
    return mean;
}

double peakSignalToNoise(double squared) {
    return squared > 0 ? -10 * std::log10(squared) : std::numeric_limits<double>::infinity();
}

PicturePtr Measuring::process(PicturePtr source, const FramePosition& position,
                              const SourceHistory& history) {
    PicturePtr result = processor_.process(source, position, history);
    const PictureDistance distance = distanceOf(*source, *result);
    const std::lock_guard lock(mutex_);
    distances_[position.number] = distance;
    return result;
}

}  // namespace vireo
