// SPDX-License-Identifier: MIT
#include "tests/bridges/openfx/host/test_image.h"

#include <cstring>
#include <random>

namespace openfx::test {

Plain::Plain(int w, int h, VireoDepth d, bool alpha) : width(w), height(h), depth(d), hasAlpha(alpha) {
    bytes.resize(rowBytes() * static_cast<std::size_t>(h));
}

std::ostream& operator<<(std::ostream& out, const Plain& picture) {
    return out << "a picture of " << picture.width << " x " << picture.height << " pixels";
}

VireoFrame Plain::frame(bool premultiplied) {
    return {.structSize = sizeof(VireoFrame),
            .width = width,
            .height = height,
            .layout = hasAlpha ? VireoRgba : VireoRgb,
            .depth = depth,
            .premultiplied = premultiplied ? 1 : 0,
            .pixels = bytes.data(),
            .stride = static_cast<std::int64_t>(rowBytes()),
            .owned = nullptr};
}

Plain noise(int width, int height, std::uint32_t seed, VireoDepth depth, bool hasAlpha) {
    Plain made(width, height, depth, hasAlpha);
    std::mt19937 random(seed);
    if (depth == VireoDepthFloat) {
        for (std::size_t i = 0; i < made.bytes.size(); i += sizeof(float)) {
            const float sample = static_cast<float>(random() & 0xFFFF) / 0xFFFF;
            std::memcpy(&made.bytes[i], &sample, sizeof sample);
        }
    } else {
        for (std::uint8_t& byte : made.bytes) byte = static_cast<std::uint8_t>(random());
    }
    return made;
}

TestImage::TestImage(const Plain& picture, const Lie& lie) : shape_(picture), lie_(lie) {
    const auto rows = static_cast<std::size_t>(picture.height + 2 * lie.margin + 2);
    memory_.resize(rows * static_cast<std::size_t>(std::abs(rowBytes())));
    std::mt19937 random(7);
    for (std::uint8_t& byte : memory_) byte = static_cast<std::uint8_t>(random());
    const OfxRectI inside = area(), whole = bounds();
    for (int y = 0; y < picture.height; ++y)
        std::memcpy(at(inside.x1, inside.y2 - 1 - y), picture.row(y), picture.rowBytes());
    before_ = memory_;

    const char* const depth = picture.depth == VireoDepth8    ? "OfxBitDepthByte"
                              : picture.depth == VireoDepth16 ? "OfxBitDepthShort"
                                                              : "OfxBitDepthFloat";
    properties.put<std::string>("OfxImageEffectPropPixelDepth", {depth});
    properties.put<std::string>("OfxImageEffectPropComponents",
                                {picture.hasAlpha ? "OfxImageComponentRGBA" : "OfxImageComponentRGB"});
    properties.put<std::string>(
        "OfxImageEffectPropPreMultiplication",
        {lie.premultiplied ? "OfxImageAlphaPremultiplied" : "OfxImageAlphaUnPremultiplied"});
    properties.put<void*>("OfxImagePropData", {at(whole.x1, whole.y1)});
    properties.put<int>("OfxImagePropRowBytes", {static_cast<int>(rowBytes())});
    properties.put<int>("OfxImagePropBounds", {whole.x1, whole.y1, whole.x2, whole.y2});
    properties.put<int>("OfxImagePropRegionOfDefinition", {inside.x1, inside.y1, inside.x2, inside.y2});
    properties.put<std::string>("OfxImagePropField", {"OfxFieldNone"});
    properties.put<double>("OfxImagePropPixelAspectRatio", {1.0666});
}

OfxRectI TestImage::area() const { return {lie_.x, lie_.y, lie_.x + shape_.width, lie_.y + shape_.height}; }

OfxRectI TestImage::bounds() const {
    const OfxRectI inside = area();
    return {inside.x1 - lie_.margin, inside.y1 - lie_.margin, inside.x2 + lie_.margin,
            inside.y2 + lie_.margin};
}

std::ptrdiff_t TestImage::rowBytes() const {
    const auto bytes =
        static_cast<std::ptrdiff_t>(shape_.pixelBytes()) * (shape_.width + 2 * lie_.margin + lie_.gap);
    return lie_.isTopDown ? -bytes : bytes;
}

std::uint8_t* TestImage::at(int x, int y) {
    const OfxRectI whole = bounds();
    const std::ptrdiff_t row = lie_.isTopDown ? whole.y2 - 1 - y : y - whole.y1;
    return memory_.data() + (row + 1) * std::abs(rowBytes()) +
           (x - whole.x1) * static_cast<std::ptrdiff_t>(shape_.pixelBytes());
}

Plain TestImage::picture() const {
    Plain made(shape_.width, shape_.height, shape_.depth, shape_.hasAlpha);
    const OfxRectI inside = area();
    for (int y = 0; y < made.height; ++y)
        std::memcpy(made.row(y), at(inside.x1, inside.y2 - 1 - y), made.rowBytes());
    return made;
}

bool TestImage::holdsOutside(const OfxRectI& area) const {
    std::vector<std::uint8_t> now = memory_;
    for (int y = area.y1; y < area.y2; ++y) {
        const auto begin = static_cast<std::size_t>(at(area.x1, y) - memory_.data());
        const std::size_t bytes = static_cast<std::size_t>(area.x2 - area.x1) * shape_.pixelBytes();
        std::memcpy(&now[begin], &before_[begin], bytes);
    }
    return now == before_;
}

}  // namespace openfx::test
