// SPDX-License-Identifier: MIT
#include "host/vrm/filter_probe.h"

#include "host/pixkit/pixkit.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <string_view>

namespace VRM {

FilterInstance newInstance(const Filter& filter) {
    FilterInstance instance(filter.entry);
    // Without memory a filter keeps no settings and says nothing.
    if (instance.settings().size() < filter.properties.recordSize()) throw std::bad_alloc();
    return instance;
}

bool readsTime(const PropertyList& properties) {
    constexpr std::string_view timedFilters[] = {"QULN Bend", "QULN Ghosting", "QULN Horizontal Hold",
                                                 "QULN Vertical Hold"};
    return std::count(std::begin(timedFilters), std::end(timedFilters), properties.matchName) != 0;
}

int lookBack(const FilterInstance& instance) {
    constexpr int size = 16;
    constexpr std::uint32_t frame = 1 << 20;

    std::uint32_t sourcePixels[size * size]{};
    std::uint32_t resultPixels[size * size]{};
    FrameBuffer source{{0, 0, size, size}, 4 * size, 0, sourcePixels};
    FrameBuffer result{{0, 0, size, size}, 4 * size, 0, resultPixels};
    struct Probe {
        std::uint32_t earliest;
        FrameBuffer* picture;
    } probe{frame, &source};
    const auto note = [](std::uint32_t time, FrameBuffer* target, const FrameRect* bounds, void* data) {
        auto& noted = *static_cast<Probe*>(data);
        noted.earliest = std::min(noted.earliest, time / 2);
        vpixCopy(noted.picture, target, &noted.picture->bounds, bounds, VPixCopyReplace);
        return std::int32_t{0};
    };
    for (const std::uint16_t field : {0, int{FieldFlagUpper}, int{FieldFlagLower}}) {
        const std::uint32_t time = 2 * frame + (field == FieldFlagLower ? 1 : 0);
        instance.render({&source, &result, time, 4 * frame, field, note, &probe});
    }
    return static_cast<int>(frame - probe.earliest);
}

}  // namespace VRM
