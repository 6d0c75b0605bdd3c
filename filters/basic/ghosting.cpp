// SPDX-License-Identifier: MIT
// Lays the current frame and one further back over an earlier one, so that moving objects leave trails.
#include "framework/filter.h"
#include "framework/frame_view.h"
#include "framework/registration_order.h"
#include "host/pixkit/pixkit.h"

#include <algorithm>

namespace Ghosting {
namespace {

// Their weights, 187 and 68, add up to 255.
constexpr std::uint32_t currentFrameMode = VPixCopyBlend | 0xBB;
constexpr std::uint32_t oldestFrameMode = VPixCopyBlend | 0x44;

/// How far back the earlier frame lies; the oldest lies twice as far.
std::uint32_t timeStep(const FilterInvocation& invocation) {
    const bool fields = (invocation.fieldFlags & (FieldFlagUpper | FieldFlagLower)) != 0;
    return invocation.timeBase->fieldDuration * (fields ? 8 : 4);
}

/// Times before the clip count as its begin. Both are 32 bits wide, the difference signed.
std::uint32_t earlier(std::uint32_t time, std::uint32_t step) {
    const std::uint32_t difference = time - step;
    return static_cast<std::int32_t>(difference) < 0 ? 0 : difference;
}

/// Calls blend(band) for bands of rows that stay in the cache from one blend to the next, the last rows
/// first.
template <class Blend>
void forEachBand(const FrameRect& bounds, Blend&& blend) {
    constexpr std::int64_t bandBytes = 1 << 17;
    const std::int64_t width = std::int64_t{bounds.right} - bounds.left;
    const std::int64_t rows =
        std::max(std::int64_t{1}, bandBytes / (bytesPerPixel * std::max(width, std::int64_t{1})));
    for (std::int64_t end = bounds.bottom; end > bounds.top; end -= rows) {
        const auto begin = std::max<std::int64_t>(bounds.top, end - rows);
        blend(FrameRect{bounds.left, static_cast<std::int32_t>(begin), bounds.right,
                        static_cast<std::int32_t>(end)});
    }
}

std::int32_t render(const FilterInvocation& invocation, const NoSettings&) {
    FrameBuffer* const source = invocation.sourceFrame;
    FrameBuffer* const destination = invocation.destFrame;
    FrameRect bounds;
    vpixGetBounds(destination, &bounds);

    GetFrameFunction* const getFrame = invocation.getFrameCallback;
    if (getFrame == nullptr) {
        vpixCopy(source, destination, &bounds, &bounds, VPixCopyReplace);
        return 0;
    }
    const std::uint32_t step = timeStep(invocation);
    void* const data = invocation.frameCallbackData;
    getFrame(earlier(invocation.frameTime, step), destination, &bounds, data);
    const VPixFunctions& vpix = *invocation.hostCallbacks->vpix;
    FrameBuffer* const oldest = vpix.newVPix.get()(&bounds);
    if (oldest != nullptr) getFrame(earlier(invocation.frameTime, 2 * step), oldest, &bounds, data);
    forEachBand(bounds, [&](const FrameRect& band) {
        vpixCopy(source, destination, &band, &band, currentFrameMode);
        if (oldest != nullptr) vpixCopy(oldest, destination, &band, &band, oldestFrameMode);
    });
    if (oldest != nullptr) vpix.disposeVPix.get()(oldest);
    return 0;
}

constexpr FilterDeclaration<NoSettings> filter{.id = 10029, .render = render};

}  // namespace

void Register(VSK::PluginRegistry& registry) { registerFilter<filter>(registry); }

}  // namespace Ghosting
