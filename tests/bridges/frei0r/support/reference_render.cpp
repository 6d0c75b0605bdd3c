// SPDX-License-Identifier: GPL-2.0-or-later
#include "tests/bridges/frei0r/support/reference_render.h"

#include "host/vireo_host.h"

#include <algorithm>
#include <random>
#include <stdexcept>

namespace {

Picture turned(const Picture& picture, PictureSize size) {
    Picture result(picture.size());
    for (unsigned y = 0; y < size.height; ++y) {
        std::copy_n(picture.begin() + std::ptrdiff_t{y} * size.width, size.width,
                    result.begin() + std::ptrdiff_t{size.height - 1 - y} * size.width);
    }
    return result;
}

FrameBuffer bufferOver(Picture& pixels, PictureSize size) {
    const auto width = static_cast<std::int32_t>(size.width);
    const auto height = static_cast<std::int32_t>(size.height);
    return {{0, 0, width, height}, width * 4, 0, pixels.data()};
}

struct EarlierFrames {
    const std::vector<Picture>& clip;
    PictureSize size;
};

std::int32_t copyFrame(std::uint32_t time, FrameBuffer* target, const FrameRect* bounds, void* data) {
    const auto& frames = *static_cast<const EarlierFrames*>(data);
    Picture pixels = turned(frames.clip.at(time / 2), frames.size);
    FrameBuffer frame = bufferOver(pixels, frames.size);
    vpixCopy(&frame, target, &frame.bounds, bounds, VPixCopyReplace);
    return 0;
}

}  // namespace

std::vector<Picture> randomClip(PictureSize size, std::size_t frames) {
    std::mt19937 random(size.width);
    std::vector<Picture> clip(frames, Picture(std::size_t{size.width} * size.height));
    for (Picture& picture : clip) std::generate(picture.begin(), picture.end(), std::ref(random));
    return clip;
}

std::shared_ptr<const hosting::MetaPlugin> testedModule() {
    return hosting::MetaPlugin::shared(std::filesystem::canonical(VIREO_TESTED_MODULE));
}

const hosting::Filter& filterOf(const hosting::MetaPlugin& module, const std::string& pluginName) {
    for (const hosting::Filter& filter : module.filters()) {
        if ("Vireo " + filter.properties.name == pluginName) return filter;
    }
    throw std::out_of_range("the module has no filter for " + pluginName);
}

void writeValue(const hosting::FilterInstance& instance, const hosting::Parameter& parameter,
                std::int64_t value) {
    const auto bytes =
        instance.settings().subspan(parameter.offset, static_cast<std::size_t>(parameter.size));
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(value);
        value >>= 8;
    }
}

Picture referenceFrame(const hosting::FilterInstance& instance, const std::vector<Picture>& clip,
                       PictureSize size, std::size_t number, std::uint32_t clipLength) {
    Picture source = turned(clip.at(number), size);
    Picture result(source.size());
    FrameBuffer sourceBuffer = bufferOver(source, size);
    FrameBuffer destination = bufferOver(result, size);
    EarlierFrames frames{clip, size};
    instance.render({.source = &sourceBuffer,
                     .destination = &destination,
                     .time = static_cast<std::uint32_t>(2 * number),
                     .duration = 2 * clipLength,
                     .getFrame = copyFrame,
                     .getFrameData = &frames});
    return turned(result, size);
}
