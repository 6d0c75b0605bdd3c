// SPDX-License-Identifier: MIT
#include "host/hosting/filter_instance.h"

#include "host/heapkit/memory_handles.h"
#include "host/hosting/meta_plugin.h"
#include "host/hosting/worker_threads.h"
#include "host/pixkit/pixkit.h"
#include "host/vireo_host.h"

#include <algorithm>
#include <functional>
#include <new>
#include <utility>

namespace hosting {
namespace {

const TimeBase timeBase{{}, fieldDuration};

FilterInvocation makeInvocation(MemoryHandle settings) {
    FilterInvocation invocation{};
    invocation.settingsHandle = settings;
    invocation.hostInstanceData = static_cast<const UtilityServices*>(vireoHostServices());
    invocation.hostCallbacks = vireoHostCallbacks();
    invocation.timeBase = &timeBase;
    return invocation;
}

std::int32_t callFilter(FilterEntryProc entry, std::int16_t selector, FilterInvocation& invocation) {
    FilterInvocation* pointer = &invocation;
    return entry(nullptr, selector, &pointer);
}

void fillTop(FrameBuffer& source, FrameBuffer& destination, const std::optional<std::int32_t>& filledRows) {
    constexpr int leastRows = 64;
    FrameRect bounds;
    vpixGetBounds(&source, &bounds);
    const std::int32_t height = bounds.bottom - bounds.top;
    const LentParts parts(std::min(filledRows.value_or(height), height), leastRows);
    const auto fill = [&](int part) {
        const FrameRect rows{bounds.left, bounds.top + parts.begin(part), bounds.right,
                             bounds.top + parts.end(part)};
        vpixCopy(&source, &destination, &rows, &rows, VPixCopyReplace);
    };
    parts.run(std::ref(fill));
}

}  // namespace

FilterInstance::FilterInstance(FilterEntryProc entry) : entry_(entry) {
    FilterInvocation invocation = makeInvocation(nullptr);
    callFilter(entry_, FilterSelectorInitSettings, invocation);
    settings_ = invocation.settingsHandle;
}

FilterInstance::FilterInstance(FilterInstance&& other) noexcept
    : entry_(other.entry_), settings_(std::exchange(other.settings_, nullptr)) {}

FilterInstance& FilterInstance::operator=(FilterInstance&& other) noexcept {
    std::swap(entry_, other.entry_);
    std::swap(settings_, other.settings_);
    return *this;
}

FilterInstance::~FilterInstance() { HeapKit::disposeHandle(settings_); }

std::span<std::uint8_t> FilterInstance::settings() const {
    if (settings_ == nullptr) return {};
    return {static_cast<std::uint8_t*>(*settings_), HeapKit::handleSize(settings_)};
}

std::vector<std::uint32_t> FilterInstance::pixelFormats() const {
    std::vector<std::uint32_t> formats;
    FilterInvocation invocation = makeInvocation(settings_);
    // A filter that does not know the selector answers 0 and writes nothing.
    while (invocation.pixelFormat = 0,
           callFilter(entry_, FilterSelectorGetPixelFormat, invocation) == 0 && invocation.pixelFormat != 0) {
        formats.push_back(std::uint32_t{invocation.pixelFormat});  // The field itself is not aligned.
        ++invocation.pixelFormatIndex;
    }
    return formats;
}

std::int32_t FilterInstance::render(const FrameRequest& request) const {
    fillTop(*request.source, *request.destination, request.filledRows);
    FilterInvocation invocation = makeInvocation(settings_);
    invocation.sourceFrame = request.source;
    invocation.destFrame = request.destination;
    invocation.frameTime = request.time;
    invocation.clipDuration = request.duration;
    invocation.fieldFlags = request.fieldFlags;
    invocation.getFrameCallback = request.getFrame;
    invocation.frameCallbackData = request.getFrameData;
    return callFilter(entry_, FilterSelectorExecute, invocation);
}

std::int32_t FilterInstance::setup(FrameBuffer* source, FrameBuffer* destination) {
    FilterInvocation invocation = makeInvocation(settings_);
    invocation.sourceFrame = source;
    invocation.destFrame = destination;
    const std::int32_t result = callFilter(entry_, FilterSelectorSetup, invocation);
    settings_ = invocation.settingsHandle;
    return result;
}

FilterInstance newInstance(const Filter& filter) {
    FilterInstance instance(filter.entry);
    // Without memory a filter keeps no settings and says nothing.
    if (instance.settings().size() < filter.properties.recordSize()) throw std::bad_alloc();
    return instance;
}

}  // namespace hosting
