// SPDX-License-Identifier: MIT
// The camera's geometry: where a flat picture appears that a camera orbiting it looks at, and the way back
// from there into the picture.
#ifndef VIREO_FILTERS_LENS_CAMERA_PROJECTION_H
#define VIREO_FILTERS_LENS_CAMERA_PROJECTION_H

#include <array>
#include <cstddef>

struct Vector3 {
    double x, y, z;
};

template <std::size_t n>
using Matrix = std::array<std::array<double, n>, n>;

/// Where a camera stands that orbits the origin at this distance; angles in radians.
Vector3 orbitingEye(double longitude, double latitude, double distance);

struct CameraPose {
    Vector3 eye;
    double roll;         ///< Radians.
    double zoom;         ///< The picture's size is divided by it.
    double perspective;  ///< Reciprocal of the focal length.
};

/// From the plane of a picture of this size to the camera's view, as homogeneous coordinates.
Matrix<4> buildViewTransform(const CameraPose& pose, double width, double height);

/// The inverse by LU decomposition. A pivot of zero counts as 1e-20, so that every matrix has one.
Matrix<4> invertMatrix(const Matrix<4>& matrix);
Matrix<8> invertMatrix(const Matrix<8>& matrix);

struct Point {
    double x, y;
};

using Quad = std::array<Point, 4>;

/// x = (a X + b Y + c) / (g X + h Y + 1) and y = (d X + e Y + f) / (g X + h Y + 1).
struct QuadMapping {
    double a, b, c, d, e, f, g, h;
};

/// The mapping that takes each corner of `from` to that of `to`.
QuadMapping solveQuadMapping(const Quad& from, const Quad& to);

#endif
