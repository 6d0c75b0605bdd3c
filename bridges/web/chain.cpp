// SPDX-License-Identifier: MIT
#include "bridges/web/chain.h"

#include "host/pixkit/mix.h"
#include "host/pixkit/pixkit.h"
#include "host/vrm/filter_traits.h"
#include "host/vrm/parameter_value.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <stdexcept>
#include <string>

namespace web {
namespace {

constexpr VRM::ValueRange mixRange{0, 100};

/// Throws std::runtime_error, which names what the value is of.
std::int64_t checkedValue(double value, const VRM::ValueRange& range, const std::string& owner) {
    const bool isInside =
        value >= static_cast<double>(range.minimum) && value <= static_cast<double>(range.maximum);
    if (!isInside || value != std::floor(value)) {
        throw std::runtime_error(owner + " takes whole numbers from " + std::to_string(range.minimum) +
                                 " to " + std::to_string(range.maximum));
    }
    return static_cast<std::int64_t>(value);
}

}  // namespace

/// What one call of render() was given.
struct Chain::Clip {
    const PicturePtr& input;
    const Moment& now;
    const InputAt& inputAt;
};

/// Follows what a filter asks getFrame for. Exceptions wait here until the filter has returned.
class Chain::EarlierFrames {
public:
    EarlierFrames(const Chain& chain, std::size_t stages, std::int32_t frame, const Picture& source,
                  const Clip& clip)
        : chain_(chain), stages_(stages), frame_(frame), source_(source), clip_(clip) {}

    static std::int32_t get(std::uint32_t time, FrameBuffer* target, const FrameRect* bounds, void* data) {
        auto& frames = *static_cast<EarlierFrames*>(data);
        try {
            const auto number =
                static_cast<std::int32_t>(std::min(time / 2, static_cast<std::uint32_t>(frames.frame_)));
            const PicturePtr earlier = number == frames.frame_
                                           ? nullptr
                                           : frames.chain_.output(frames.stages_, number, frames.clip_);
            FrameBuffer* buffer = earlier ? earlier->buffer() : frames.source_.buffer();
            vpixCopy(buffer, target, &buffer->bounds, bounds, VPixCopyReplace);
            return 0;
        } catch (...) {
            frames.failure_ = std::current_exception();
            return -1;
        }
    }

    void throwFailure() const {
        if (failure_) std::rethrow_exception(failure_);
    }

private:
    const Chain& chain_;
    const std::size_t stages_;
    const std::int32_t frame_;
    const Picture& source_;
    const Clip& clip_;
    std::exception_ptr failure_;
};

void Chain::add(const VRM::Filter& filter, std::span<const double> values, double mix) {
    const auto& parameters = filter.properties.parameters;
    if (values.size() != parameters.size()) {
        throw std::runtime_error(filter.properties.name + " takes " + std::to_string(parameters.size()) +
                                 " values, not " + std::to_string(values.size()));
    }
    Stage stage{&filter, VRM::newInstance(filter), 0};
    for (std::size_t i = 0; i < values.size(); ++i) {
        const VRM::Parameter& parameter = parameters[i];
        const std::string owner = parameter.name + " of " + filter.properties.name;
        VRM::writeValue(parameter, checkedValue(values[i], VRM::valueRange(parameter), owner),
                        stage.instance.settings());
    }
    stage.mix = static_cast<int>(checkedValue(mix, mixRange, "mix of " + filter.properties.name));
    stages_.push_back(std::move(stage));
}

PicturePtr Chain::render(const PicturePtr& input, const Moment& moment, const InputAt& inputAt) const {
    for (const Stage& stage : stages_) {
        const VRM::PropertyList& properties = stage.filter->properties;
        const VRM::FrameLimits& limits = VRM::filterTraits(properties.matchName).limits;
        const std::string refusal =
            VRM::frameRefusal(properties.name, limits, input->width(), input->height(), input->rowBytes());
        if (!refusal.empty()) throw std::runtime_error(refusal);
    }
    return output(stages_.size(), moment.frame, Clip{input, moment, inputAt});
}

/// What the first `stages` filters make of a frame.
PicturePtr Chain::output(std::size_t stages, std::int32_t frame, const Clip& clip) const {
    if (stages == 0) return frame == clip.now.frame ? clip.input : clip.inputAt(frame);
    const Stage& stage = stages_[stages - 1];
    const PicturePtr source = output(stages - 1, frame, clip);
    if (stage.mix == mixRange.minimum) return source;

    const auto result = std::make_shared<Picture>(source->width(), source->height());
    EarlierFrames earlierFrames(*this, stages - 1, frame, *source, clip);
    const std::int32_t code =
        stage.instance.render({.source = source->buffer(),
                               .destination = result->buffer(),
                               .time = 2 * static_cast<std::uint32_t>(frame),
                               .duration = 2 * static_cast<std::uint32_t>(clip.now.frames),
                               .getFrame = EarlierFrames::get,
                               .getFrameData = &earlierFrames});
    earlierFrames.throwFailure();
    if (code != 0) {
        throw std::runtime_error(stage.filter->properties.name + " failed on frame " + std::to_string(frame) +
                                 " with result " + std::to_string(code));
    }
    if (stage.mix < mixRange.maximum) PixKit::mixInto(*source->buffer(), *result->buffer(), stage.mix);
    return result;
}

}  // namespace web
