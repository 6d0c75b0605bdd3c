// SPDX-License-Identifier: MIT
#include "bridges/openfx/rendering.h"

#include "bridges/openfx/proxy.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace openfx {
namespace {

/// A frame of another size than `like`, with pixels of its own.
class OwnFrame {
public:
    OwnFrame(const VireoFrame& like, std::size_t pixelBytes, int width, int height)
        : frame_(like),
          pixels_(pixelBytes * static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {
        frame_.width = width;
        frame_.height = height;
        frame_.pixels = pixels_.data();
        frame_.stride = static_cast<std::int64_t>(pixelBytes) * width;
    }
    OwnFrame(const OwnFrame&) = delete;
    OwnFrame& operator=(const OwnFrame&) = delete;

    VireoFrame& operator*() { return frame_; }

private:
    VireoFrame frame_;
    std::vector<std::uint8_t> pixels_;
};

bool isSingle(const std::string& field) { return field == ofx::field::upper || field == ofx::field::lower; }

/// Rows of the upper field have odd numbers, counted from below.
bool isUpper(int row) { return (row & 1) != 0; }

int enlargedSide(int side, double scale) {
    constexpr double longest = 1 << 20;
    return scale < 1 ? static_cast<int>(std::lround(std::min(side / scale, longest))) : side;
}

}  // namespace

Rendering::Rendering(Instance& instance, const Properties& in)
    : instance_(instance),
      time_(in.number(ofx::prop::time, 0)),
      scale_(Instance::scaleOf(in)),
      field_(in.text(ofx::prop::fieldToRender)),
      target_(instance.host_, instance.output_, time_),
      source_(instance.host_, instance.source_, time_),
      window_(shared(in.rectangle(ofx::prop::renderWindow), target_.bounds())),
      picture_(source_.picture()) {
    if (!target_) throw Refusal{VireoFailed, "the host has no image to render into"};
    if (!target_.isUsable() || (source_ && (!source_.isUsable() || source_.depth() != target_.depth())))
        throw Refusal{VireoUnsupported, "the host's images are of another kind than was asked for"};
}

void Rendering::run() {
    if (isEmpty(window_)) return;
    if (!source_ || isEmpty(picture_)) return fillWindow(nullptr);
    renderPicture();
}

std::int32_t Rendering::interlacing() const {
    const bool isFielded = field_ == ofx::field::both || isSingle(field_);
    const std::string order = instance_.sourceClip().text(ofx::prop::fieldOrder);
    if (!isFielded || !isSingle(order) || isSingle(source_.field())) return 0;
    const bool isTopUpper = isUpper(picture_.y2 - 1);
    return (order == ofx::field::upper) == isTopUpper ? 1 : 2;
}

void Rendering::renderPicture() {
    if (isSame(window_, picture_) && !isSingle(field_)) {
        VireoFrame result = target_.frame(picture_);
        return renderInto(result);
    }
    OwnFrame result(target_.frame(window_), target_.pixelBytes(), widthOf(picture_), heightOf(picture_));
    renderInto(*result);
    fillWindow(&*result);
}

void Rendering::renderInto(VireoFrame& result) {
    const VireoFilter& filter = instance_.effect_.filter().facts;
    // Earlier frames are asked for on any of the engine's threads, and the host knows only this one.
    const bool looksBack = filter.earlierFrames > 0;
    const ChainPool::Lease chain(instance_.chains_, looksBack ? 1 : instance_.host_.threads());
    instance_.set(chain, time_, scale_);
    const VireoTime now = instance_.moment(time_, interlacing());
    VireoRenderOptions options{};
    options.structSize = sizeof options;
    options.isCancelled = isCancelled;
    options.user = this;
    options.reducesDepth = 1;
    const VireoFrame source = source_.frame(picture_);
    if (scale_.isProxy() && filter.countsPixels != 0) {
        const Enlarged large(source, enlargedSide(source.width, scale_.x),
                             enlargedSide(source.height, scale_.y));
        OwnFrame rendered(result, target_.pixelBytes(), large.frame().width, large.frame().height);
        check(vireoChainRender(chain.get(), &large.frame(), &*rendered, &now, &options));
        reduce(*rendered, result);
        return;
    }
    if (looksBack) options.earlierFrame = earlierFrame;
    check(vireoChainRender(chain.get(), &source, &result, &now, &options));
}

void Rendering::fillWindow(const VireoFrame* picture) const {
    const std::size_t pixelBytes = target_.pixelBytes();
    const OfxRectI there = picture == nullptr ? OfxRectI{} : shared(window_, picture_);
    for (int y = window_.y1; y < window_.y2; ++y) {
        if (isSingle(field_) && isUpper(y) != (field_ == ofx::field::upper)) continue;
        std::memset(target_.at(window_.x1, y), 0, static_cast<std::size_t>(widthOf(window_)) * pixelBytes);
        if (isEmpty(there) || y < there.y1 || y >= there.y2) continue;
        const auto* const row =
            static_cast<const std::uint8_t*>(picture->pixels) + (picture_.y2 - 1 - y) * picture->stride;
        std::memcpy(target_.at(there.x1, y),
                    row + static_cast<std::size_t>(there.x1 - picture_.x1) * pixelBytes,
                    static_cast<std::size_t>(widthOf(there)) * pixelBytes);
    }
}

std::int32_t Rendering::earlierFrame(void* user, std::int64_t frame, const VireoFrame* target, VireoTime*) {
    const auto& rendering = *static_cast<const Rendering*>(user);
    const Instance& instance = rendering.instance_;
    const Image earlier(instance.host_, instance.source_,
                        instance.sourceRange().first + static_cast<double>(frame));
    const bool isAlike = earlier && earlier.isUsable() && earlier.depth() == rendering.source_.depth() &&
                         earlier.pixelBytes() == rendering.source_.pixelBytes();
    copyInto(*target, rendering.picture_, isAlike ? earlier : rendering.source_);
    return 0;
}

std::int32_t Rendering::isCancelled(void* user) {
    const auto& rendering = *static_cast<const Rendering*>(user);
    // The host knows which render a call is of by the thread.
    if (std::this_thread::get_id() != rendering.thread_) return 0;
    return rendering.instance_.host_.effects().abort(rendering.instance_.handle_);
}

}  // namespace openfx
