// SPDX-License-Identifier: MIT
#ifndef VIREO_BRIDGES_OPENFX_IMAGE_H
#define VIREO_BRIDGES_OPENFX_IMAGE_H

#include "bridges/openfx/host.h"

#include <vireo/vireo.h>

#include <cstdint>
#include <string>

namespace openfx {

constexpr int widthOf(const OfxRectI& area) { return area.x2 - area.x1; }
constexpr int heightOf(const OfxRectI& area) { return area.y2 - area.y1; }
constexpr bool isEmpty(const OfxRectI& area) { return area.x1 >= area.x2 || area.y1 >= area.y2; }
OfxRectI shared(const OfxRectI& one, const OfxRectI& other);
bool isSame(const OfxRectI& one, const OfxRectI& other);

/// An image of a clip at a moment, held until it goes. Areas count as hosts do: from below.
class Image {
public:
    Image(const Host& host, OfxImageClipHandle clip, OfxTime time);
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;
    ~Image();

    /// Whether the host had one.
    explicit operator bool() const { return handle_ != nullptr; }

    /// Whether its pixels are of a kind that was asked for.
    bool isUsable() const { return pixels_ != nullptr && pixelBytes_ != 0; }

    const OfxRectI& bounds() const { return bounds_; }

    /// The picture in it: hosts may hand out more than that.
    OfxRectI picture() const;

    /// "OfxFieldUpper" or "OfxFieldLower" where it is one field alone.
    const std::string& field() const { return field_; }

    VireoDepth depth() const { return depth_; }
    std::size_t pixelBytes() const { return pixelBytes_; }

    /// An area inside the bounds for the engine, which counts from the top.
    VireoFrame frame(const OfxRectI& area) const;

    std::uint8_t* at(int x, int y) const;

private:
    const Host& host_;
    OfxPropertySetHandle handle_ = nullptr;
    OfxRectI bounds_{}, region_{};
    std::uint8_t* pixels_ = nullptr;
    std::int64_t rowBytes_ = 0;
    VireoDepth depth_ = VireoDepth8;
    VireoLayout layout_ = VireoRgba;
    std::size_t pixelBytes_ = 0;
    bool isPremultiplied_ = false;
    std::string field_;
};

/// Copies what two frames of the same layout and depth have of an area, and clears the rest.
void copyInto(const VireoFrame& target, const OfxRectI& area, const Image& source);

}  // namespace openfx

#endif
