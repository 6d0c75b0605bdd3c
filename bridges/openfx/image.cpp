// SPDX-License-Identifier: MIT
#include "bridges/openfx/image.h"

#include <algorithm>
#include <cstring>

namespace openfx {
namespace {

int sampleBytes(const std::string& depth) {
    if (depth == ofx::depth::byte) return 1;
    if (depth == ofx::depth::word) return 2;
    return depth == ofx::depth::floating ? 4 : 0;
}

int samples(const std::string& components) {
    if (components == ofx::components::rgba) return 4;
    return components == ofx::components::rgb ? 3 : 0;
}

}  // namespace

OfxRectI shared(const OfxRectI& one, const OfxRectI& other) {
    return {std::max(one.x1, other.x1), std::max(one.y1, other.y1), std::min(one.x2, other.x2),
            std::min(one.y2, other.y2)};
}

bool isSame(const OfxRectI& one, const OfxRectI& other) {
    return one.x1 == other.x1 && one.y1 == other.y1 && one.x2 == other.x2 && one.y2 == other.y2;
}

Image::Image(const Host& host, OfxImageClipHandle clip, OfxTime time) : host_(host) {
    if (clip == nullptr) return;
    if (host.effects().clipGetImage(clip, time, nullptr, &handle_) != ofx::Ok) handle_ = nullptr;
    if (handle_ == nullptr) return;
    const Properties properties = host.of(handle_);
    bounds_ = properties.rectangle(ofx::prop::imageBounds);
    region_ = properties.rectangle(ofx::prop::imageRegion);
    pixels_ = static_cast<std::uint8_t*>(properties.pointer(ofx::prop::imageData));
    const int bytes = sampleBytes(properties.text(ofx::prop::pixelDepth));
    const int count = samples(properties.text(ofx::prop::imageComponents));
    depth_ = static_cast<VireoDepth>(8 * bytes);
    layout_ = count == 3 ? VireoRgb : VireoRgba;
    pixelBytes_ = static_cast<std::size_t>(bytes) * static_cast<std::size_t>(count);
    rowBytes_ =
        properties.integer(ofx::prop::imageRowBytes, widthOf(bounds_) * static_cast<int>(pixelBytes_));
    std::string premultiplication = properties.text(ofx::prop::preMultiplication);
    if (premultiplication.empty()) {
        OfxPropertySetHandle ofClip = nullptr;
        if (host.effects().clipGetPropertySet(clip, &ofClip) == ofx::Ok)
            premultiplication = host.of(ofClip).text(ofx::prop::preMultiplication);
    }
    isPremultiplied_ = premultiplication == ofx::premultiplied;
    field_ = properties.text(ofx::prop::imageField);
}

Image::~Image() {
    if (handle_ != nullptr) host_.effects().clipReleaseImage(handle_);
}

OfxRectI Image::picture() const { return isEmpty(region_) ? bounds_ : shared(bounds_, region_); }

std::uint8_t* Image::at(int x, int y) const {
    return pixels_ + (y - bounds_.y1) * rowBytes_ +
           (x - bounds_.x1) * static_cast<std::ptrdiff_t>(pixelBytes_);
}

VireoFrame Image::frame(const OfxRectI& area) const {
    VireoFrame frame{};
    frame.structSize = sizeof frame;
    frame.width = widthOf(area);
    frame.height = heightOf(area);
    frame.layout = layout_;
    frame.depth = depth_;
    frame.premultiplied = isPremultiplied_ ? 1 : 0;
    frame.pixels = at(area.x1, area.y2 - 1);
    frame.stride = -rowBytes_;
    return frame;
}

void copyInto(const VireoFrame& target, const OfxRectI& area, const Image& source) {
    const OfxRectI there = shared(area, source.picture());
    const std::size_t pixelBytes = source.pixelBytes();
    for (int y = 0; y < target.height; ++y) {
        auto* const row = static_cast<std::uint8_t*>(target.pixels) + y * target.stride;
        std::memset(row, 0, static_cast<std::size_t>(target.width) * pixelBytes);
        const int from = area.y2 - 1 - y;
        if (isEmpty(there) || from < there.y1 || from >= there.y2) continue;
        std::memcpy(row + static_cast<std::size_t>(there.x1 - area.x1) * pixelBytes,
                    source.at(there.x1, from), static_cast<std::size_t>(widthOf(there)) * pixelBytes);
    }
}

}  // namespace openfx
