// SPDX-License-Identifier: MIT
#include "bridges/mlt/earlier_frames.h"

#include <algorithm>
#include <cstring>

namespace vireo::mlt {
namespace {

constexpr std::size_t pixelBytes = 4;

/// What a filter is attached to; null where it is connected into a field instead.
mlt_service attachedTo(mlt_filter filter) {
    return static_cast<mlt_service>(
        mlt_properties_get_data(MLT_FILTER_PROPERTIES(filter), "service", nullptr));
}

bool isProducer(mlt_service service) {
    switch (mlt_service_identify(service)) {
        case mlt_service_producer_type:
        case mlt_service_tractor_type:
        case mlt_service_playlist_type:
        case mlt_service_multitrack_type:
        case mlt_service_chain_type: return true;
        default: return false;
    }
}

bool covers(mlt_filter filter, mlt_position position) {
    if (mlt_properties_get_int(MLT_FILTER_PROPERTIES(filter), "disable") != 0) return false;
    const mlt_position out = mlt_filter_get_out(filter);
    return position >= mlt_filter_get_in(filter) && (out == 0 || position <= out);
}

/// Lets a frame of the service go through the filters that stand before one of its own.
void applyFiltersBefore(mlt_filter end, mlt_service service, mlt_frame frame) {
    const mlt_position position = mlt_frame_get_position(frame);
    const auto passRange = [&](mlt_properties from, const char* name, mlt_position own) {
        mlt_properties_set_position(MLT_FRAME_PROPERTIES(frame), name,
                                    own != 0 ? own : mlt_properties_get_position(from, name));
    };
    for (int i = 0; i < mlt_service_filter_count(service); ++i) {
        mlt_filter filter = mlt_service_filter(service, i);
        if (filter == end) return;
        if (!covers(filter, position)) continue;
        passRange(MLT_SERVICE_PROPERTIES(service), "in", mlt_filter_get_in(filter));
        passRange(MLT_SERVICE_PROPERTIES(service), "out", mlt_filter_get_out(filter));
        mlt_filter_process(filter, frame);
        mlt_service_apply_filters(MLT_FILTER_SERVICE(filter), frame, 1);
    }
}

/// Another frame of what the filter sees, without the filter and those behind it. The service that a filter
/// is attached to is locked while it asks the filter; a field's is not.
OwnedFrame nextFrame(mlt_filter filter) {
    mlt_frame frame = nullptr;
    mlt_service service = attachedTo(filter);
    const int error = service != nullptr
                          ? service->get_frame(service, &frame, 0)
                          : mlt_service_get_frame(mlt_service_producer(MLT_FILTER_SERVICE(filter)), &frame,
                                                  mlt_filter_get_track(filter));
    OwnedFrame owned(frame);
    if (error != 0 || frame == nullptr) return nullptr;
    if (service != nullptr) applyFiltersBefore(filter, service, frame);
    return owned;
}

/// The number of a clip's first frame: those of a cut count from the begin of what was cut.
mlt_position firstOf(mlt_producer clip) { return mlt_producer_is_cut(clip) ? mlt_producer_get_in(clip) : 0; }

OwnedFrame frameAt(mlt_filter filter, mlt_producer clip, mlt_position position) {
    if (clip == nullptr) return nullptr;
    mlt_producer_seek(clip, position - firstOf(clip));
    return nextFrame(filter);
}

}  // namespace

mlt_producer clipOf(mlt_filter filter) {
    mlt_service service = attachedTo(filter);
    if (service == nullptr) {
        service = mlt_service_producer(MLT_FILTER_SERVICE(filter));
        while (service != nullptr && !isProducer(service)) service = mlt_service_producer(service);
    }
    return service != nullptr && isProducer(service) ? MLT_PRODUCER(service) : nullptr;
}

void Past::take(const std::uint8_t* image, int width, int height) {
    if (width == width_ && height == height_) return;
    pixels_.assign(image,
                   image + pixelBytes * static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    width_ = width;
    height_ = height;
    frame_.reset();
}

void Past::render(mlt_frame now, int width, int height) {
    // How pictures are scaled and deinterlaced is the consumer's wish, which stands in its frames.
    mlt_properties_copy(MLT_FRAME_PROPERTIES(frame_.get()), MLT_FRAME_PROPERTIES(now), "consumer");
    std::uint8_t* image = nullptr;
    mlt_image_format format = mlt_image_rgba;
    const OwnedFrame frame = std::move(frame_);
    if (mlt_frame_get_image(frame.get(), &image, &format, &width, &height, 0) == 0 &&
        format == mlt_image_rgba)
        take(image, width, height);
}

bool Past::copyTo(const VireoFrame& target, mlt_frame now) {
    const std::lock_guard lock(mutex_);
    if (frame_ != nullptr && pixels_.empty()) render(now, target.width, target.height);
    if (target.width != width_ || target.height != height_) return false;
    const std::size_t rowBytes = pixelBytes * static_cast<std::size_t>(width_);
    for (int y = 0; y < height_; ++y)
        std::memcpy(static_cast<std::uint8_t*>(target.pixels) + y * target.stride,
                    &pixels_[rowBytes * static_cast<std::size_t>(y)], rowBytes);
    return true;
}

Pasts EarlierFrames::at(mlt_filter filter, mlt_frame frame, std::uint32_t reach) {
    const mlt_position now = mlt_frame_get_position(frame);
    if (run_.empty() || run_.back()->position() + 1 != now) run_.clear();
    mlt_producer clip = clipOf(filter);
    const mlt_position next = clip != nullptr ? mlt_producer_position(clip) : 0;
    const mlt_position first =
        std::max(clip != nullptr ? firstOf(clip) : 0, now - static_cast<mlt_position>(reach));
    for (mlt_position position = run_.empty() ? first : now; position <= now; ++position)
        run_.push_back(std::make_shared<Past>(position, frameAt(filter, clip, position)));
    if (clip != nullptr) mlt_producer_seek(clip, next);
    while (run_.front()->position() < first) run_.pop_front();
    return {run_.begin(), run_.end()};
}

}  // namespace vireo::mlt
