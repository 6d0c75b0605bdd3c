// SPDX-License-Identifier: MIT
#include "app/chain/filter_stage.h"

#include "app/chain/vuya.h"
#include "app/render/render_job.h"
#include "host/pixkit/mix.h"
#include "host/pixkit/pixkit.h"

#include <algorithm>
#include <exception>
#include <stdexcept>

namespace vireo {
namespace {

constexpr int fullMix = 100;

/// Follows what a filter asks getFrame for. Exceptions wait here until the filter has returned.
struct FrameSource {
    const Moment* moment;
    const Picture* input;
    const InputAt* inputAt;
    std::exception_ptr failure;
};

std::int32_t getFrame(std::uint32_t time, FrameBuffer* target, const FrameRect* bounds, void* data) {
    auto& frames = *static_cast<FrameSource*>(data);
    try {
        const FramePosition& now = frames.moment->position;
        // Frames ahead are not there yet; nothing that this host runs asks for them.
        const std::int64_t number = std::min<std::int64_t>(time / 2, now.number);
        const PicturePtr other = number == now.number ? nullptr : (*frames.inputAt)(number);
        const Picture& picture = other ? *other : *frames.input;
        vpixCopy(picture.buffer(), target, &picture.buffer()->bounds, bounds, VPixCopyReplace);
        return 0;
    } catch (...) {
        frames.failure = std::current_exception();
        return -1;
    }
}

std::uint16_t fieldFlags(Field field) {
    switch (field) {
        case Field::Upper: return FieldFlagUpper;
        case Field::Lower: return FieldFlagLower;
        case Field::None: break;
    }
    return 0;
}

}  // namespace

std::uint32_t Moment::time() const {
    const Field first = position.interlacing == Interlacing::BottomFieldFirst ? Field::Lower : Field::Upper;
    const bool isSecond = field != Field::None && field != first;
    return static_cast<std::uint32_t>(2 * position.number) + (isSecond ? 1 : 0);
}

/// An instance whose settings are those of a frame. Where they change along the clip no other thread has it.
class FilterStage::Lease {
public:
    Lease(FilterStage& stage, const FramePosition& position) : stage_(stage) {
        if (stage_.instances_.size() == 1) {
            instance_ = stage_.instances_.front().get();
            return;
        }
        {
            std::unique_lock lock(stage_.mutex_);
            stage_.returned_.wait(lock, [&] { return !stage_.idle_.empty(); });
            instance_ = stage_.idle_.back();
            stage_.idle_.pop_back();
        }
        try {
            const auto record = stage_.settings_.record(position);
            std::copy(record.begin(), record.end(), instance_->settings().begin());
        } catch (...) {
            giveBack();
            throw;
        }
    }
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;
    ~Lease() {
        if (stage_.instances_.size() > 1) giveBack();
    }

    const VRM::FilterInstance& operator*() const { return *instance_; }

private:
    void giveBack() {
        {
            const std::lock_guard lock(stage_.mutex_);
            stage_.idle_.push_back(instance_);
        }
        stage_.returned_.notify_one();
    }

    FilterStage& stage_;
    VRM::FilterInstance* instance_ = nullptr;
};

FilterStage::FilterStage(FilterSettings settings, int threads)
    : settings_(std::move(settings)), traits_(VRM::filterTraits(settings_.filter().properties.matchName)) {
    // Two at least, since one alone is shared and its settings stay as they are.
    const int count = settings_.isAnimated() ? std::max(threads, 2) : 1;
    const auto record = settings_.record({});
    for (int i = 0; i < count; ++i) {
        instances_.push_back(std::make_unique<VRM::FilterInstance>(settings_.filter().entry));
        std::copy(record.begin(), record.end(), instances_.back()->settings().begin());
        idle_.push_back(instances_.back().get());
    }
    pixelFormats_ = instances_.front()->pixelFormats();
}

void FilterStage::execute(const Picture& source, Picture& destination, const Moment& moment,
                          const InputAt& inputAt) {
    const std::string refused = refusal(source.width(), source.height(), source.rowBytes());
    if (!refused.empty()) throw RenderError(refused);
    FrameSource frames{&moment, &source, &inputAt, nullptr};
    const Lease instance(*this, moment.position);
    const std::int32_t result =
        (*instance).render({source.buffer(), destination.buffer(), moment.time(),
                            static_cast<std::uint32_t>(2 * moment.position.clipLength),
                            fieldFlags(moment.field), getFrame, &frames});
    if (frames.failure) std::rethrow_exception(frames.failure);
    if (result != 0) {
        throw std::runtime_error(settings_.filter().properties.name + " failed on frame " +
                                 std::to_string(moment.position.number) + " with result " +
                                 std::to_string(result));
    }
}

std::string FilterStage::refusal(int width, int height, std::int64_t rowBytes) const {
    return VRM::frameRefusal(settings_.filter().properties.name, traits_.limits, width, height, rowBytes);
}

PicturePtr FilterStage::apply(const PicturePtr& input, const Moment& moment, const InputAt& inputAt) {
    const int mix = settings_.covers(moment.position) ? settings_.mixAt(moment.position) : 0;
    if (mix == 0) return input;

    const bool asVuya = input->format() == PixKit::formatBgra && format_ == PixKit::formatVuya;
    const PicturePtr source = asVuya ? vuyaFromBgra(*input) : input;
    auto result = std::make_shared<Picture>(source->width(), source->height(), source->format());
    execute(*source, *result, moment, inputAt);
    if (asVuya) result = bgraFromVuya(*result);
    if (mix < fullMix) PixKit::mixInto(*input->buffer(), *result->buffer(), mix);
    return result;
}

}  // namespace vireo
