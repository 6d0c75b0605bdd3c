// SPDX-License-Identifier: MIT
#include "app/media/picture_tools.h"

#include "app/media/color_kernels.h"
#include "engine/pixels/pixel_layout.h"

#include <algorithm>

namespace vireo {
namespace {

template <std::size_t bytes>
struct Pixel {
    std::uint8_t data[bytes];
};

template <std::size_t bytes>
void orient(const Picture& from, Picture& to, const Orientation& orientation) {
    using P = Pixel<bytes>;
    constexpr int tile = 32;  // both pictures stay in the first cache while rows become columns
    const int width = to.width();
    const int height = to.height();
    for (int top = 0; top < height; top += tile) {
        for (int left = 0; left < width; left += tile) {
            for (int y = top; y < std::min(top + tile, height); ++y) {
                P* const row = reinterpret_cast<P*>(to.row(y));
                const int v = orientation.mirrorY ? height - 1 - y : y;
                for (int x = left; x < std::min(left + tile, width); ++x) {
                    const int u = orientation.mirrorX ? width - 1 - x : x;
                    row[x] = orientation.transpose ? reinterpret_cast<const P*>(from.row(u))[v]
                                                   : reinterpret_cast<const P*>(from.row(v))[u];
                }
            }
        }
    }
}

PixelFormat premultipliedFormat(const Picture& picture) {
    const SampleDepth depth = picture.format() == formatBgra16      ? SampleDepth::Sixteen
                              : picture.format() == formatBgraFloat ? SampleDepth::Float
                                                                    : SampleDepth::Eight;
    return {PixelLayout::Bgra, depth, true};
}

bool isOpaque(const Picture& picture, int y) {
    const std::uint8_t* const row = picture.row(y);
    const std::int64_t width = picture.width();
    const ColorKernels& kernels = colorKernelsTables.chosen();
    switch (picture.format()) {
        case formatBgra16: return kernels.hasAll(row, 8 * width, 0xFFFF000000000000);
        case formatBgraFloat: {
            const auto* const channels = reinterpret_cast<const float*>(row);
            for (std::int64_t x = 0; x < width; ++x) {
                if (channels[4 * x + 3] < 1.0F) return false;
            }
            return true;
        }
        default: return kernels.hasAll(row, 4 * width, 0xFF000000FF000000);
    }
}

}  // namespace

Orientation exifOrientation(int tag) {
    switch (tag) {
        case 2: return {false, true, false};
        case 3: return {false, true, true};
        case 4: return {false, false, true};
        case 5: return {true, false, false};
        case 6: return {true, true, false};
        case 7: return {true, true, true};
        case 8: return {true, false, true};
        default: return {};
    }
}

std::shared_ptr<Picture> oriented(const Picture& picture, const Orientation& orientation) {
    const int width = orientation.transpose ? picture.height() : picture.width();
    const int height = orientation.transpose ? picture.width() : picture.height();
    auto result = std::make_shared<Picture>(width, height, picture.format());
    switch (PixKit::bytesPerPixel(picture.format())) {
        case 16: orient<16>(picture, *result, orientation); break;
        case 8: orient<8>(picture, *result, orientation); break;
        default: orient<4>(picture, *result, orientation);
    }
    return result;
}

void unpremultiply(Picture& picture) {
    const PixelFormat format = premultipliedFormat(picture);
    for (int y = 0; y < picture.height(); ++y)
        rowToBgra(format, picture.row(y), picture.row(y), picture.width());
}

void premultiply(Picture& picture) {
    const PixelFormat format = premultipliedFormat(picture);
    for (int y = 0; y < picture.height(); ++y)
        rowFromBgra(format, picture.row(y), picture.row(y), picture.width());
}

bool hasTransparency(const Picture& picture) {
    for (int y = 0; y < picture.height(); ++y) {
        if (!isOpaque(picture, y)) return true;
    }
    return false;
}

}  // namespace vireo
