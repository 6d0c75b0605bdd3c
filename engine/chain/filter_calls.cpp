// SPDX-License-Identifier: MIT
#include "engine/chain/filter_calls.h"

#include "host/pixkit/pixkit.h"

#include <exception>
#include <stdexcept>
#include <string>

namespace vireo {
namespace {

std::uint16_t fieldFlags(Field field) {
    switch (field) {
        case Field::Upper: return FieldFlagUpper;
        case Field::Lower: return FieldFlagLower;
        case Field::None: break;
    }
    return 0;
}

}  // namespace

FilterStage::Lease::Lease(FilterStage& stage, const FramePosition& position) : stage_(stage) {
    if (!stage_.settings_.isAnimated()) {
        instance_ = stage_.instances_.front().get();
        return;
    }
    const auto record = stage_.settings_.record(position);
    {
        const std::lock_guard lock(stage_.mutex_);
        if (stage_.idle_.empty()) {
            auto made =
                std::make_unique<hosting::FilterInstance>(hosting::newInstance(stage_.settings_.filter()));
            stage_.idle_.reserve(stage_.instances_.size() + 1);  // giving back must not throw
            stage_.instances_.push_back(std::move(made));
            instance_ = stage_.instances_.back().get();
        } else {
            instance_ = stage_.idle_.back();
            stage_.idle_.pop_back();
        }
    }
    std::copy(record.begin(), record.end(), instance_->settings().begin());
}

FilterStage::Lease::~Lease() {
    if (!stage_.settings_.isAnimated()) return;
    const std::lock_guard lock(stage_.mutex_);
    stage_.idle_.push_back(instance_);
}

/// Follows what a filter asks getFrame for. Exceptions wait here until the filter has returned.
struct FilterStage::Calls::FrameSource {
    Calls* calls;
    FrameBuffer* input;
    Rows rows;
    std::exception_ptr failure;
};

FilterStage::Calls::Calls(FilterStage& stage, std::uint32_t format, const Moment& moment,
                          const InputAt& inputAt)
    : stage_(stage),
      filledRows_(format == PixKit::formatBgra ? stage.traits_.unwrittenRows : std::nullopt),
      moment_(moment),
      inputAt_(inputAt),
      instance_(stage, moment.position) {}

void FilterStage::Calls::render(FrameBuffer* source, FrameBuffer* destination, const Rows& rows) {
    FrameSource frames{this, source, rows, nullptr};
    const std::int32_t result = (*instance_)
                                    .render({source, destination, moment_.time(),
                                             static_cast<std::uint32_t>(2 * moment_.position.clipLength),
                                             fieldFlags(moment_.field), getFrame, &frames, filledRows_});
    if (frames.failure) std::rethrow_exception(frames.failure);
    if (result != 0) {
        throw std::runtime_error(stage_.settings_.filter().properties.name + " failed on frame " +
                                 std::to_string(moment_.position.number) + " with result " +
                                 std::to_string(result));
    }
}

std::int32_t FilterStage::Calls::getFrame(std::uint32_t time, FrameBuffer* target, const FrameRect* bounds,
                                          void* data) {
    auto& frames = *static_cast<FrameSource*>(data);
    try {
        const FramePosition& now = frames.calls->moment_.position;
        // Frames ahead are not there yet; nothing that this host runs asks for them.
        const std::int64_t number = std::min<std::int64_t>(time / 2, now.number);
        const PicturePtr other = number == now.number ? nullptr : frames.calls->earlier(number);
        const bool isWhole = other && other->height() == frames.rows.count;
        FrameBuffer part = other && !isWhole ? rowsOf(*other->buffer(), frames.rows) : FrameBuffer{};
        FrameBuffer* const buffer = !other ? frames.input : isWhole ? other->buffer() : &part;
        vpixCopy(buffer, target, &buffer->bounds, bounds, VPixCopyReplace);
        return 0;
    } catch (...) {
        frames.failure = std::current_exception();
        return -1;
    }
}

/// Bands of one frame ask for the same earlier ones.
PicturePtr FilterStage::Calls::earlier(std::int64_t number) {
    const std::lock_guard lock(mutex_);
    for (const auto& [known, picture] : earlier_) {
        if (known == number) return picture;
    }
    earlier_.emplace_back(number, inputAt_(number));
    return earlier_.back().second;
}

}  // namespace vireo
