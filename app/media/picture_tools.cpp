// SPDX-License-Identifier: MIT
#include "app/media/picture_tools.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

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

/// Calls `change(pixel)` with a pointer to the four channels of each pixel, as they are stored.
template <class Change>
void forEachPixel(Picture& picture, Change change) {
    const auto rows = [&]<class Channel>(Channel*) {
        for (int y = 0; y < picture.height(); ++y) {
            Channel* const row = reinterpret_cast<Channel*>(picture.row(y));
            for (int x = 0; x < picture.width(); ++x) change(row + 4 * x);
        }
    };
    switch (picture.format()) {
        case formatBgra16: return rows(static_cast<std::uint16_t*>(nullptr));
        case formatBgraFloat: return rows(static_cast<float*>(nullptr));
        default: return rows(static_cast<std::uint8_t*>(nullptr));
    }
}

template <class Channel>
constexpr std::uint64_t opaque = sizeof(Channel) == 1 ? 255 : 65535;

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
    forEachPixel(picture, []<class Channel>(Channel* pixel) {
        for (int c = 0; c < 3; ++c) {
            if constexpr (std::is_floating_point_v<Channel>) {
                pixel[c] = pixel[3] > 0 ? pixel[c] / pixel[3] : 0;
            } else {
                const std::uint64_t alpha = pixel[3];
                const std::uint64_t colour =
                    alpha == 0 ? 0 : (pixel[c] * opaque<Channel> + alpha / 2) / alpha;
                pixel[c] = static_cast<Channel>(std::min(colour, opaque<Channel>));
            }
        }
    });
}

void premultiply(Picture& picture) {
    forEachPixel(picture, []<class Channel>(Channel* pixel) {
        for (int c = 0; c < 3; ++c) {
            if constexpr (std::is_floating_point_v<Channel>) {
                pixel[c] *= pixel[3];
            } else {
                pixel[c] = static_cast<Channel>((std::uint64_t{pixel[c]} * pixel[3] + opaque<Channel> / 2) /
                                                opaque<Channel>);
            }
        }
    });
}

bool hasTransparency(const Picture& picture) {
    bool transparent = false;
    forEachPixel(const_cast<Picture&>(picture), [&]<class Channel>(const Channel* pixel) {
        if constexpr (std::is_floating_point_v<Channel>) {
            transparent |= pixel[3] < 1;
        } else {
            transparent |= pixel[3] != opaque<Channel>;
        }
    });
    return transparent;
}

}  // namespace vireo
