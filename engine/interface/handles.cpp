// SPDX-License-Identifier: MIT
#include "engine/interface/handles.h"

#include <cmath>
#include <cstdlib>
#include <limits>
#include <new>

#ifdef _WIN32
#include "host/win32.h"
#endif

namespace vireo {
namespace {

/// The last failure of a thread.
struct LastFailure {
    VireoError shown{VireoDone, -1, "", "", "", ""};
    std::string sentence, filter, parameter, value;
};

#ifdef _WIN32

/// Kept where the system frees it: MinGW's runtime frees the storage of thread_local objects before it calls
/// their destructors (GCC's bug 80816).
class FailureStore {
public:
    FailureStore() : index_(FlsAlloc([](void* failure) { delete static_cast<LastFailure*>(failure); })) {}
    ~FailureStore() { FlsFree(index_); }
    FailureStore(const FailureStore&) = delete;
    FailureStore& operator=(const FailureStore&) = delete;

    LastFailure& ofThisThread() {
        if (void* const known = FlsGetValue(index_)) return *static_cast<LastFailure*>(known);
        auto* const made = new (std::nothrow) LastFailure;
        if (made != nullptr && FlsSetValue(index_, made)) return *made;
        delete made;
        return withoutMemory_;
    }

private:
    DWORD index_;
    LastFailure withoutMemory_;
};

LastFailure& lastFailure() {
    static FailureStore store;
    return store.ofThisThread();
}

#else

LastFailure& lastFailure() {
    thread_local LastFailure failure;
    return failure;
}

#endif

VireoStatus statusOf(Fault fault) {
    switch (fault) {
        case Fault::Failed: return VireoFailed;
        case Fault::Usage: return VireoUsage;
        case Fault::NoModule: return VireoNoModule;
        case Fault::UnknownFilter: return VireoUnknownFilter;
        case Fault::UnknownParameter: return VireoUnknownParameter;
        case Fault::BadValue: return VireoBadValue;
        case Fault::BadText: return VireoBadText;
        case Fault::BadSettings: return VireoBadSettings;
        case Fault::UnknownPreset: return VireoUnknownPreset;
        case Fault::TooLarge: return VireoTooLarge;
        case Fault::Unsupported: return VireoUnsupported;
        case Fault::NoFrame: return VireoNoFrame;
        case Fault::Cancelled: return VireoCancelled;
    }
    return VireoFailed;
}

std::int64_t offsetIn(std::string_view text, const char* place) {
    if (place == nullptr || text.data() == nullptr) return -1;
    const auto begin = reinterpret_cast<std::uintptr_t>(text.data());
    const auto address = reinterpret_cast<std::uintptr_t>(place);
    return address >= begin && address <= begin + text.size() ? static_cast<std::int64_t>(address - begin)
                                                              : -1;
}

}  // namespace

VireoStatus remember(const Error& error, std::string_view text) noexcept {
    try {
        LastFailure& last = lastFailure();
        last.sentence = error.what();
        last.filter = error.filter();
        last.parameter = error.parameter();
        last.value = error.value();
        last.shown = {statusOf(error.fault()), offsetIn(text, error.place()), last.sentence.c_str(),
                      last.filter.c_str(),     last.parameter.c_str(),        last.value.c_str()};
        return last.shown.status;
    } catch (...) {
        return remember(VireoNoMemory, "there is not enough memory");
    }
}

VireoStatus remember(VireoStatus status, const char* sentence) noexcept {
    LastFailure& last = lastFailure();
    last.shown = {status, -1, sentence, "", "", ""};
    try {
        last.sentence = sentence;
        last.shown.sentence = last.sentence.c_str();
    } catch (...) {
        last.shown.sentence = "there is not enough memory";
    }
    return status;
}

void require(bool condition, const char* sentence) {
    if (!condition) throw Error(Fault::Usage, sentence);
}

char* copyOf(std::string_view text) {
    auto* const copy = static_cast<char*>(std::malloc(text.size() + 1));
    if (copy == nullptr) throw std::bad_alloc();
    std::copy(text.begin(), text.end(), copy);
    copy[text.size()] = '\0';
    return copy;
}

FramePosition positionOf(const VireoTime* given) {
    // Frames are counted in fields of 32 bits, whose differences filters take as signed.
    constexpr std::int64_t mostFrames = std::numeric_limits<std::int32_t>::max() / 2;

    const VireoTime time = read(given);
    require(time.frame >= 0 && time.frame <= mostFrames && time.frames >= 0 && time.frames <= mostFrames,
            "frames are counted from 0 to 1073741823");
    // Products with them stay finite.
    constexpr double slowestRate = 1e-6, latestSecond = 1e15;
    require(time.rate == 0 || (std::isfinite(time.rate) && time.rate >= slowestRate),
            "a frame rate is 0, for 25, or at least 0.000001");
    require(time.seconds <= latestSecond, "seconds are a number up to 1000000000000000");
    require(time.interlacing >= 0 && time.interlacing <= 2, "interlacing is 0, 1 or 2");
    FramePosition position;
    position.number = time.frame;
    position.clipLength = time.frames;
    if (time.rate > 0) position.frameRate = time.rate;
    const bool hasSeconds = given != nullptr && time.seconds >= 0 &&
                            given->structSize >= offsetof(VireoTime, seconds) + sizeof time.seconds;
    position.seconds = hasSeconds ? time.seconds : static_cast<double>(time.frame) / position.frameRate;
    position.interlacing = static_cast<Interlacing>(time.interlacing);
    return position;
}

Library::Library(std::shared_ptr<const hosting::MetaPlugin> loaded, std::uint16_t language)
    : module(std::move(loaded)), catalogue(module->filters(), language) {
    for (const hosting::Filter& filter : module->filters()) {
        const hosting::PropertyList& properties = filter.properties;
        const hosting::FilterTraits& traits = hosting::filterTraits(properties.matchName);
        const hosting::FilterInstance instance = hosting::newInstance(filter);
        FilterTexts& made = texts.emplace_back();
        made.name = localised(properties.nameKey, language);
        made.category = localised(properties.categoryKey, language);
        made.key = keySegment(properties);
        made.fileName = traits.fileName;
        made.initialRecord.assign(instance.settings().begin(), instance.settings().end());
        for (const std::uint32_t format : instance.pixelFormats()) {
            if (format == PixKit::formatCode("Bgra")) made.depths |= VireoDepth16;
            if (format == PixKit::formatCode("BGra")) made.depths |= VireoDepthFloat;
        }
        for (std::size_t i = 0; i < properties.parameters.size(); ++i) {
            const hosting::Parameter& parameter = properties.parameters[i];
            FilterTexts::Parameter& shown = made.parameters.emplace_back();
            shown.name = shown.label = localised(parameter.key, language);
            if (i >= traits.parameters.size()) continue;
            const hosting::ParameterTraits& known = traits.parameters[i];
            shown.unit = known.unit;
            shown.inPixels = known.inPixels;
            shown.label = localised(std::string(known.labelKey), language);
            for (const std::string_view choice : known.choices) {
                shown.choices.push_back(localised(std::string(choice), language));
            }
        }
    }
}

}  // namespace vireo

std::shared_ptr<const vireo::BuiltChain> VireoChain::built() const {
    const std::lock_guard lock(mutex_);
    if (built_ == nullptr && !settings.filters().empty()) {
        if (workers_ == nullptr && threads > 1)
            workers_ = std::make_shared<vireo::WorkerPool>(static_cast<int>(threads));
        built_ = std::make_shared<const vireo::BuiltChain>(
            vireo::BuiltChain{vireo::FilterChain(settings.filters()), workers_});
    }
    return built_;
}

void VireoChain::changed() {
    const std::lock_guard lock(mutex_);
    built_.reset();
    if (workers_ != nullptr && workers_->count() != static_cast<int>(threads)) workers_.reset();
}

const VireoError* vireoLastError(void) { return &vireo::lastFailure().shown; }
