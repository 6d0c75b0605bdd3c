// SPDX-License-Identifier: MIT
#include "engine/chain/vuya.h"

#include <algorithm>
#include <cmath>

namespace vireo {
namespace {

// BT.601: what red and blue weigh in luma, green the rest.
constexpr double redWeight = 0.299, blueWeight = 0.114, greenWeight = 1 - redWeight - blueWeight;

// Studio range: luma takes 219 steps above 16, each chroma difference 224 about 128.
constexpr double lumaBlack = 16, lumaScale = 219.0 / 255;
constexpr double chromaZero = 128, chromaScale = 224.0 / 255;
constexpr double redSpan = 2 * (1 - redWeight), blueSpan = 2 * (1 - blueWeight);

std::uint8_t rounded(double value) {
    return static_cast<std::uint8_t>(std::clamp(std::floor(value + 0.5), 0.0, 255.0));
}

void pixelToVuya(const std::uint8_t* bgra, std::uint8_t* vuya) {
    const double luma = redWeight * bgra[2] + greenWeight * bgra[1] + blueWeight * bgra[0];
    vuya[0] = rounded(chromaZero + (bgra[2] - luma) / redSpan * chromaScale);
    vuya[1] = rounded(chromaZero + (bgra[0] - luma) / blueSpan * chromaScale);
    vuya[2] = rounded(lumaBlack + luma * lumaScale);
    vuya[3] = bgra[3];
}

void pixelToBgra(const std::uint8_t* vuya, std::uint8_t* bgra) {
    const double luma = (vuya[2] - lumaBlack) / lumaScale;
    const double red = luma + (vuya[0] - chromaZero) / chromaScale * redSpan;
    const double blue = luma + (vuya[1] - chromaZero) / chromaScale * blueSpan;
    bgra[0] = rounded(blue);
    bgra[1] = rounded((luma - redWeight * red - blueWeight * blue) / greenWeight);
    bgra[2] = rounded(red);
    bgra[3] = vuya[3];
}

std::shared_ptr<Picture> converted(const Picture& picture, std::uint32_t format,
                                   void (*convertPixel)(const std::uint8_t*, std::uint8_t*)) {
    auto result = std::make_shared<Picture>(picture.width(), picture.height(), format);
    for (int y = 0; y < picture.height(); ++y) {
        const std::uint8_t* from = picture.row(y);
        std::uint8_t* to = result->row(y);
        for (int x = 0; x < picture.width(); ++x) convertPixel(from + 4 * x, to + 4 * x);
    }
    return result;
}

}  // namespace

std::shared_ptr<Picture> vuyaFromBgra(const Picture& picture) {
    return converted(picture, PixKit::formatVuya, pixelToVuya);
}

std::shared_ptr<Picture> bgraFromVuya(const Picture& picture) {
    return converted(picture, PixKit::formatBgra, pixelToBgra);
}

}  // namespace vireo
