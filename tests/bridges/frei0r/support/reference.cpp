// SPDX-License-Identifier: GPL-2.0-or-later
#include "tests/bridges/frei0r/support/reference.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <random>
#include <stdexcept>

namespace {

void require(VireoStatus status) {
    if (status != VireoDone) throw std::runtime_error(vireoLastError()->sentence);
}

VireoFrame frameOver(Picture& pixels, PictureSize size) {
    VireoFrame frame{.structSize = sizeof frame};
    frame.width = static_cast<std::int32_t>(size.width);
    frame.height = static_cast<std::int32_t>(size.height);
    frame.pixels = pixels.data();
    frame.stride = std::int64_t{4} * size.width;
    return frame;
}

std::int32_t copyFrame(void* clip, std::int64_t number, const VireoFrame* target, VireoTime*) {
    const Picture& picture =
        static_cast<const std::vector<Picture>*>(clip)->at(static_cast<std::size_t>(number));
    for (int y = 0; y < target->height; ++y)
        std::memcpy(static_cast<std::uint8_t*>(target->pixels) + y * target->stride,
                    &picture[std::size_t(y) * target->width], std::size_t{4} * target->width);
    return 0;
}

}  // namespace

std::vector<Picture> randomClip(PictureSize size, std::size_t frames) {
    std::mt19937 random(size.width);
    std::vector<Picture> clip(frames, Picture(std::size_t{size.width} * size.height));
    for (Picture& picture : clip) std::generate(picture.begin(), picture.end(), std::ref(random));
    return clip;
}

Reference::Reference(const std::string& pluginName) {
    VireoEngine* engine = nullptr;
    VireoChain* chain = nullptr;
    require(vireoOpen(nullptr, &engine));
    engine_.reset(engine);
    require(vireoFindFilter(engine, pluginName.substr(std::string("Vireo ").size()).c_str(), &filter_));
    require(vireoChainNew(engine, &chain));
    chain_.reset(chain);
    require(vireoChainAddFilter(chain, filter_));
}

std::vector<VireoParameter> Reference::parameters() const {
    VireoFilter about{.structSize = sizeof about};
    require(vireoDescribeFilter(engine_.get(), filter_, &about));
    std::vector<VireoParameter> all(about.parameterCount, {.structSize = sizeof(VireoParameter)});
    for (std::uint32_t i = 0; i < all.size(); ++i)
        require(vireoDescribeParameter(engine_.get(), filter_, i, &all[i]));
    return all;
}

void Reference::set(int parameter, std::int64_t value) {
    require(vireoChainSetValue(chain_.get(), 0, parameter, value));
}

std::string Reference::refusal(PictureSize size) const {
    Picture none;
    const VireoFrame frame = frameOver(none, size);
    return vireoChainAccepts(chain_.get(), &frame, 0) == VireoDone ? "" : vireoLastError()->sentence;
}

Picture Reference::frame(const std::vector<Picture>& clip, PictureSize size, std::size_t number,
                         int clipLength) const {
    Picture source = clip.at(number), result(source.size());
    const VireoFrame from = frameOver(source, size);
    VireoFrame to = frameOver(result, size);
    const VireoTime time{sizeof time, 0, static_cast<std::int64_t>(number), clipLength, 25, -1};
    const VireoRenderOptions options{sizeof options, copyFrame, nullptr,
                                     const_cast<std::vector<Picture>*>(&clip)};
    require(vireoChainRender(chain_.get(), &from, &to, &time, &options));
    return result;
}
