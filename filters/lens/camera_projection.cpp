// SPDX-License-Identifier: MIT
// Sums are evaluated in one fixed order: the last bits of the mapping decide pixels.
#include "filters/lens/camera_projection.h"

#include <cmath>
#include <utility>

namespace {

constexpr double negligible = 1e-7;

double dot(const Vector3& a, const Vector3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

Vector3 cross(const Vector3& a, const Vector3& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// A vector without length stays as it is.
Vector3 normalised(const Vector3& v) {
    double length = std::sqrt(dot(v, v));
    if (length < negligible) length = 1;
    return {v.x / length, v.y / length, v.z / length};
}

double withoutNoise(double value) { return std::abs(value) < negligible ? 0 : value; }

Matrix<4> product(const Matrix<4>& a, const Matrix<4>& b) {
    Matrix<4> result{};
    for (std::size_t row = 0; row < 4; ++row) {
        for (std::size_t column = 0; column < 4; ++column) {
            for (std::size_t k = 0; k < 4; ++k) result[row][column] += a[row][k] * b[k][column];
        }
    }
    return result;
}

template <std::size_t n>
struct Decomposition {
    Matrix<n> lu;
    std::array<std::size_t, n> pivotRow;
};

/// Column by column; the pivot is the largest relative to its row, the earlier of equals. A row of zeros
/// never wins.
template <std::size_t n>
Decomposition<n> decompose(Matrix<n> a) {
    std::array<double, n> scale{};
    for (std::size_t row = 0; row < n; ++row) {
        double largest = 0;
        for (const double value : a[row]) {
            if (std::abs(value) > largest) largest = std::abs(value);
        }
        if (largest != 0) scale[row] = 1 / largest;
    }
    std::array<std::size_t, n> pivotRow{};
    for (std::size_t column = 0; column < n; ++column) {
        const auto reduce = [&](std::size_t row, std::size_t terms) {
            for (std::size_t k = 0; k < terms; ++k) a[row][column] -= a[row][k] * a[k][column];
        };
        for (std::size_t row = 0; row < column; ++row) reduce(row, row);
        std::size_t pivot = column;
        double largest = 0;
        for (std::size_t row = column; row < n; ++row) {
            reduce(row, column);
            const double weight = scale[row] * std::abs(a[row][column]);
            if (weight > largest) {
                largest = weight;
                pivot = row;
            }
        }
        if (pivot != column) {
            std::swap(a[pivot], a[column]);
            scale[pivot] = scale[column];
        }
        pivotRow[column] = pivot;
        if (a[column][column] == 0) a[column][column] = 1e-20;
        const double reciprocal = 1 / a[column][column];
        for (std::size_t row = column + 1; row < n; ++row) a[row][column] *= reciprocal;
    }
    return {a, pivotRow};
}

template <std::size_t n>
std::array<double, n> solve(const Decomposition<n>& decomposition, std::array<double, n> b) {
    const Matrix<n>& lu = decomposition.lu;
    for (std::size_t row = 0; row < n; ++row) {
        std::swap(b[row], b[decomposition.pivotRow[row]]);
        for (std::size_t k = 0; k < row; ++k) b[row] -= lu[row][k] * b[k];
    }
    for (std::size_t row = n; row-- > 0;) {
        for (std::size_t k = row + 1; k < n; ++k) b[row] -= lu[row][k] * b[k];
        b[row] /= lu[row][row];
    }
    return b;
}

template <std::size_t n>
Matrix<n> inverse(const Matrix<n>& matrix) {
    const Decomposition<n> decomposition = decompose(matrix);
    Matrix<n> result{};
    for (std::size_t column = 0; column < n; ++column) {
        std::array<double, n> unit{};
        unit[column] = 1;
        const std::array<double, n> solution = solve(decomposition, unit);
        for (std::size_t row = 0; row < n; ++row) result[row][column] = solution[row];
    }
    return result;
}

}  // namespace

Matrix<4> invertMatrix(const Matrix<4>& matrix) { return inverse(matrix); }

Matrix<8> invertMatrix(const Matrix<8>& matrix) { return inverse(matrix); }

Vector3 orbitingEye(double longitude, double latitude, double distance) {
    return {withoutNoise(std::sin(longitude) * std::cos(latitude) * distance),
            withoutNoise(std::sin(latitude) * distance),
            withoutNoise(std::cos(longitude) * std::cos(latitude) * distance)};
}

Matrix<4> buildViewTransform(const CameraPose& pose, double width, double height) {
    constexpr Vector3 up{0, 1, 0};
    const Vector3 eye = pose.eye;
    const Vector3 direction = normalised(eye);
    const double along = dot(up, direction);
    const Vector3 upright =
        normalised({up.x - along * direction.x, up.y - along * direction.y, up.z - along * direction.z});
    const Vector3 side = normalised(cross(upright, direction));
    const Matrix<4> camera{{{side.x, upright.x, direction.x, eye.x},
                            {side.y, upright.y, direction.y, eye.y},
                            {side.z, upright.z, direction.z, eye.z},
                            {0, 0, 0, 1}}};
    const double cosine = withoutNoise(std::cos(pose.roll)) / pose.zoom;
    const double sine = withoutNoise(std::sin(pose.roll)) / pose.zoom;
    const Matrix<4> lens{
        {{cosine, sine, 0, 0}, {sine, -cosine, 0, 0}, {0, 0, 1, 0}, {0, 0, -pose.perspective, 1}}};
    const Matrix<4> placement{{{1, 0, 0, -width / 2}, {0, -1, 0, height / 2}, {0, 0, 1, 0}, {0, 0, 0, 1}}};
    return product(product(lens, invertMatrix(camera)), placement);
}

QuadMapping solveQuadMapping(const Quad& from, const Quad& to) {
    Matrix<8> equations{};
    std::array<double, 8> values{};
    for (std::size_t corner = 0; corner < 4; ++corner) {
        const auto [X, Y] = from[corner];
        const auto [x, y] = to[corner];
        equations[corner] = {X, Y, 1, 0, 0, 0, -(X * x), -(Y * x)};
        equations[corner + 4] = {0, 0, 0, X, Y, 1, -(X * y), -(Y * y)};
        values[corner] = x;
        values[corner + 4] = y;
    }
    const Matrix<8> solver = invertMatrix(equations);
    std::array<double, 8> unknowns{};
    for (std::size_t row = 0; row < 8; ++row) {
        for (std::size_t k = 0; k < 8; ++k) unknowns[row] += solver[row][k] * values[k];
    }
    const auto [a, b, c, d, e, f, g, h] = unknowns;
    return {a, b, c, d, e, f, g, h};
}
