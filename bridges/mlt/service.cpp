// SPDX-License-Identifier: MIT
#include "bridges/mlt/service.h"

#include "bridges/mlt/earlier_frames.h"
#include "bridges/mlt/engine.h"
#include "bridges/mlt/values.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vireo::mlt {
namespace {

constexpr const char* stateName = "_vireo";

/// A chain, and what it was made of. Its filters are set up anew after a change, so that only changes are
/// set.
struct MadeChain {
    std::string source;
    Chain chain;
    std::vector<Value> values;
    std::uint32_t threads = 1;

    void setValues(const std::vector<Parameter>& parameters, mlt_properties properties,
                   const Moment& moment) {
        values.resize(parameters.size());
        for (std::size_t i = 0; i < parameters.size(); ++i) {
            Value value = valueAt(parameters[i], properties, moment);
            if (value == values[i]) continue;
            setValue(chain.get(), parameters[i], value);
            values[i] = std::move(value);
        }
    }

    void setThreads(std::uint32_t wanted) {
        if (wanted != threads) check(vireoChainSetThreads(chain.get(), wanted));
        threads = wanted;
    }
};

/// What an MLT filter holds. Frames of it may be under way on several threads.
class State {
public:
    State(const VireoEngine* engine, const char* service)
        : engine_(engine), filter_(filterOf(engine, service)) {
        if (filter_) parameters_ = parametersOf(engine, *filter_);
    }

    const std::vector<Parameter>& parameters() const { return parameters_; }

    /// A chain with the values of a moment, for one thread.
    MadeChain take(mlt_filter filter, const Moment& moment);
    void giveBack(MadeChain chain);

    EarlierFrames& earlierFrames() { return earlierFrames_; }

    /// Says what is wrong, once.
    void report(mlt_filter filter, const std::string& sentence);

private:
    std::string source(mlt_properties properties) const;
    Chain make(mlt_properties properties) const;

    const VireoEngine* engine_;
    std::optional<std::uint32_t> filter_;
    std::vector<Parameter> parameters_;
    EarlierFrames earlierFrames_;
    std::mutex mutex_;
    std::vector<MadeChain> idle_;
    std::string reported_;
};

std::string text(mlt_properties properties, const char* name) {
    const char* value = mlt_properties_get(properties, name);
    return value != nullptr ? value : "";
}

std::string State::source(mlt_properties properties) const {
    if (filter_) return {};
    return text(properties, "preset") + '\n' + text(properties, "settings") + '\n' +
           text(properties, "chain");
}

Chain State::make(mlt_properties properties) const {
    VireoChain* made;
    check(vireoChainNew(engine_, &made));
    Chain chain(made);
    if (filter_) {
        check(vireoChainAddFilter(made, *filter_));
        return chain;
    }
    const auto add = [&](const char* name, VireoStatus (*adder)(VireoChain*, const char*)) {
        const std::string value = text(properties, name);
        if (!value.empty()) check(adder(made, value.c_str()));
    };
    add("preset", vireoChainAddPreset);
    add("settings", vireoChainAddFile);
    add("chain", vireoChainAddText);
    return chain;
}

MadeChain State::take(mlt_filter filter, const Moment& moment) {
    // The text of an animated property is there until it is asked for again, also on another thread.
    const std::lock_guard lock(mutex_);
    mlt_properties properties = MLT_FILTER_PROPERTIES(filter);
    const std::string wanted = source(properties);
    MadeChain made;
    std::erase_if(idle_, [&](const MadeChain& chain) { return chain.source != wanted; });
    if (!idle_.empty()) {
        made = std::move(idle_.back());
        idle_.pop_back();
    }
    if (made.chain == nullptr) made = {wanted, make(properties), {}};
    made.setValues(parameters_, properties, moment);
    return made;
}

void State::giveBack(MadeChain chain) {
    const std::lock_guard lock(mutex_);
    idle_.push_back(std::move(chain));
}

void State::report(mlt_filter filter, const std::string& sentence) {
    {
        const std::lock_guard lock(mutex_);
        if (std::exchange(reported_, sentence) == sentence) return;
    }
    mlt_log_error(MLT_FILTER_SERVICE(filter), "%s\n", sentence.c_str());
}

State& stateOf(mlt_filter filter) {
    return *static_cast<State*>(mlt_properties_get_data(MLT_FILTER_PROPERTIES(filter), stateName, nullptr));
}

/// What is known of a frame when it passes the filter, for when its image is asked for.
struct Passed {
    Moment moment;
    VireoTime time;
    Pasts pasts;
};

/// One image on its way through the chain.
struct Rendering {
    mlt_frame frame;
    const Passed& passed;

    static std::int32_t earlierFrame(void* self, std::int64_t number, const VireoFrame* target, VireoTime*) {
        const auto& [frame, passed] = *static_cast<const Rendering*>(self);
        // Where MLT has no earlier frames, the nearest stands for them.
        const auto nearest = std::ranges::find_if(
            passed.pasts, [number](const auto& past) { return past->position() >= number; });
        for (auto past = nearest; past != passed.pasts.end(); ++past) {
            if ((*past)->copyTo(*target, frame)) return 0;
        }
        return 1;
    }
};

/// As the frame is once its image is there. Tracks say of pictures that did not tell that they have fields,
/// so that the profile must have them too.
std::int32_t interlacing(mlt_filter filter, mlt_properties frame) {
    const mlt_profile profile = mlt_service_profile(MLT_FILTER_SERVICE(filter));
    if (profile == nullptr || profile->progressive != 0) return 0;
    if (!mlt_properties_exists(frame, "progressive") || mlt_properties_get_int(frame, "progressive") != 0)
        return 0;
    return mlt_properties_get_int(frame, "top_field_first") != 0 ? 1 : 2;
}

/// Counts what is rendered at the same time. Where the consumer works on several frames at once each has one
/// thread; frames within tracks do not tell, so that it is seen by their coming together.
class Busy {
public:
    Busy() : others_(underWay_++) {}
    ~Busy() { --underWay_; }
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

    std::uint32_t threads(mlt_frame frame) const {
        if (others_ > 0 || frame->is_processing != 0) return 1;
        return static_cast<std::uint32_t>(std::max(1, mlt_slices_count_normal()));
    }

private:
    static inline std::atomic<int> underWay_{0};
    const int others_;
};

int renderImage(mlt_filter filter, mlt_frame frame, const Passed& passed, MadeChain& made,
                std::uint8_t** image, mlt_image_format* format, int* width, int* height) {
    *format = mlt_image_rgba;
    const auto upstream = [&] { return mlt_frame_get_image(frame, image, format, width, height, 1); };
    const int error =
        passed.pasts.empty() ? upstream() : passed.pasts.back()->keep(upstream, image, width, height);
    if (error != 0 || *format != mlt_image_rgba) return error;

    auto picture = sized<VireoFrame>();
    picture.width = *width;
    picture.height = *height;
    picture.layout = VireoRgba;
    picture.pixels = *image;
    picture.stride = std::int64_t{4} * *width;
    VireoTime time = passed.time;
    time.interlacing = interlacing(filter, MLT_FRAME_PROPERTIES(frame));
    Rendering rendering{frame, passed};
    auto options = sized<VireoRenderOptions>();
    options.earlierFrame = passed.pasts.empty() ? nullptr : Rendering::earlierFrame;
    options.user = &rendering;
    VireoChain* chain = made.chain.get();
    check(vireoChainAccepts(chain, &picture, time.interlacing));
    const Busy busy;
    made.setThreads(busy.threads(frame));
    check(vireoChainRender(chain, &picture, &picture, &time, &options));
    return 0;
}

bool leavesAsItIs(const VireoChain* chain, const VireoTime& time) {
    std::int32_t identity;
    check(vireoChainIsIdentity(chain, &time, &identity));
    return identity != 0;
}

int getImage(mlt_frame frame, std::uint8_t** image, mlt_image_format* format, int* width, int* height,
             int writable) {
    auto* filter = static_cast<mlt_filter>(mlt_frame_pop_service(frame));
    const auto& passed = *static_cast<const Passed*>(mlt_frame_pop_service(frame));
    State& state = stateOf(filter);
    const auto untouched = [&] { return mlt_frame_get_image(frame, image, format, width, height, writable); };
    MadeChain made;
    try {
        mlt_service_lock(MLT_FILTER_SERVICE(filter));
        const std::unique_ptr<mlt_service_s, decltype(&mlt_service_unlock)> lock(MLT_FILTER_SERVICE(filter),
                                                                                 mlt_service_unlock);
        made = state.take(filter, passed.moment);
        if (leavesAsItIs(made.chain.get(), passed.time)) made.chain.reset();
    } catch (const std::exception& error) {
        state.report(filter, error.what());
        made.chain.reset();
    }
    if (made.chain == nullptr) return untouched();
    try {
        const int error = renderImage(filter, frame, passed, made, image, format, width, height);
        state.giveBack(std::move(made));
        return error;
    } catch (const std::exception& error) {
        state.report(filter, error.what());
        return 0;
    }
}

Pasts pastsFor(mlt_filter filter, mlt_frame frame, const Moment& moment) {
    State& state = stateOf(filter);
    MadeChain made = state.take(filter, moment);
    auto needs = sized<VireoNeeds>();
    check(vireoChainNeeds(made.chain.get(), &needs));
    state.giveBack(std::move(made));
    if (needs.earlierFrames == 0) return {};
    return state.earlierFrames().at(filter, frame, needs.earlierFrames);
}

VireoTime timeOf(mlt_filter filter, mlt_frame frame) {
    auto time = sized<VireoTime>();
    time.frame = std::max(0, mlt_frame_get_position(frame));
    if (mlt_producer clip = clipOf(filter))
        time.frames = mlt_producer_get_length(mlt_producer_cut_parent(clip));
    if (mlt_profile profile = mlt_service_profile(MLT_FILTER_SERVICE(filter)))
        time.rate = mlt_profile_fps(profile);
    time.seconds = -1;
    return time;
}

mlt_frame process(mlt_filter filter, mlt_frame frame) {
    try {
        const Moment moment{mlt_filter_get_position(filter, frame), mlt_filter_get_length2(filter, frame)};
        auto passed =
            std::make_unique<Passed>(Passed{moment, timeOf(filter, frame), pastsFor(filter, frame, moment)});
        mlt_frame_push_service(frame, passed.get());
        mlt_properties_set_data(
            mlt_frame_unique_properties(frame, MLT_FILTER_SERVICE(filter)), "passed", passed.release(), 0,
            [](void* data) { delete static_cast<Passed*>(data); }, nullptr);
        mlt_frame_push_service(frame, filter);
        mlt_frame_push_get_image(frame, getImage);
    } catch (const std::exception& error) {
        stateOf(filter).report(filter, error.what());
    }
    return frame;
}

void setProperties(mlt_properties properties, const State& state, const char* chain) {
    for (const Parameter& parameter : state.parameters())
        mlt_properties_set(properties, parameter.name.c_str(), parameter.initial.c_str());
    if (state.parameters().empty()) mlt_properties_set(properties, "chain", chain);
}

}  // namespace

mlt_filter makeFilter(const VireoEngine* engine, const char* service, const char* chain) {
    try {
        auto state = std::make_unique<State>(engine, service);
        mlt_filter filter = mlt_filter_new();
        if (filter == nullptr) return nullptr;
        mlt_properties properties = MLT_FILTER_PROPERTIES(filter);
        setProperties(properties, *state, chain);
        mlt_properties_set_data(
            properties, stateName, state.release(), 0, [](void* data) { delete static_cast<State*>(data); },
            nullptr);
        filter->process = process;
        return filter;
    } catch (const std::exception& error) {
        mlt_log_error(nullptr, "%s: %s\n", service, error.what());
        return nullptr;
    }
}

}  // namespace vireo::mlt
