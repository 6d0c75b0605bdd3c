// SPDX-License-Identifier: MIT
#include "tests/engine/support/fake_filters.h"

#include "host/pixkit/pixkit.h"

#include <cstring>

namespace vireo::test {
namespace {

std::uint8_t* pixel(const FrameBuffer& buffer, int x, int y) {
    return static_cast<std::uint8_t*>(buffer.pixels.get()) + std::ptrdiff_t{y} * buffer.rowBytes + 4 * x;
}

template <class Change>
void forEachPixel(const FilterInvocation& invocation, Change change) {
    for (int y = 0; y < invocation.sourceFrame->bounds.bottom; ++y) {
        for (int x = 0; x < invocation.sourceFrame->bounds.right; ++x)
            change(pixel(*invocation.sourceFrame, x, y), pixel(*invocation.destFrame, x, y), x, y);
    }
}

std::int32_t addValue(void*, std::int16_t selector, FilterInvocation** handle) {
    FilterInvocation& invocation = **handle;
    if (selector == FilterSelectorInitSettings) {
        invocation.settingsHandle = invocation.hostCallbacks->memory->newHandle.get()(2);
        const std::int16_t initial = 5;
        std::memcpy(*invocation.settingsHandle, &initial, sizeof initial);
        return 1;
    }
    if (selector == FilterSelectorExecute) {
        std::int16_t amount = 0;
        std::memcpy(&amount, *invocation.settingsHandle, sizeof amount);
        forEachPixel(invocation, [amount](const std::uint8_t* from, std::uint8_t* to, int, int) {
            to[0] = static_cast<std::uint8_t>(from[0] + amount);
        });
    }
    return 0;
}

std::int32_t addStamp(void*, std::int16_t selector, FilterInvocation** handle) {
    const FilterInvocation& invocation = **handle;
    if (selector != FilterSelectorExecute) return 0;
    forEachPixel(invocation, [&](const std::uint8_t*, std::uint8_t* to, int, int) {
        to[0] = static_cast<std::uint8_t>(invocation.frameTime);
        to[1] = static_cast<std::uint8_t>(invocation.fieldFlags >> 8);
        to[2] = static_cast<std::uint8_t>(invocation.clipDuration);
    });
    return 0;
}

std::int32_t echo(void*, std::int16_t selector, FilterInvocation** handle) {
    const FilterInvocation& invocation = **handle;
    if (selector != FilterSelectorExecute) return 0;
    const std::uint32_t step = invocation.fieldFlags == 0 ? 4 : 8;
    const std::uint32_t time = invocation.frameTime < step ? 0 : invocation.frameTime - step;
    const FrameRect bounds = invocation.sourceFrame->bounds;
    FrameBuffer* earlier = invocation.hostCallbacks->vpix->newVPix.get()(&bounds);
    invocation.getFrameCallback.get()(time, earlier, &bounds, invocation.frameCallbackData);
    forEachPixel(invocation, [&](const std::uint8_t* from, std::uint8_t* to, int x, int y) {
        to[0] = static_cast<std::uint8_t>(10 * from[0] - pixel(*earlier, x, y)[0]);
    });
    invocation.hostCallbacks->vpix->disposeVPix.get()(earlier);
    return 0;
}

std::int32_t deepCopy(void*, std::int16_t selector, FilterInvocation** handle) {
    constexpr std::uint32_t formats[] = {PixKit::formatCode("Bgra"), PixKit::formatVuya, PixKit::formatBgra};
    FilterInvocation& invocation = **handle;
    if (selector != FilterSelectorGetPixelFormat) return 0;
    if (invocation.pixelFormatIndex >= std::size(formats)) return 1;
    invocation.pixelFormat = formats[invocation.pixelFormatIndex];
    return 0;
}

hosting::Filter filter(std::uint32_t id, FilterEntryProc entry, const std::string& name,
                       const char* matchName = "of no known filter",
                       std::vector<hosting::Parameter> parameters = {}) {
    hosting::PropertyList list;
    list.nameKey = "$$$/Test/Filters/Fake" + std::to_string(id) + "/Name=" + name;
    list.name = name;
    list.matchName = matchName;
    list.parameters = std::move(parameters);
    return {id, entry, list};
}

}  // namespace

const std::vector<hosting::Filter>& fakeFilters() {
    static const std::vector<hosting::Filter> filters = {
        filter(1, addValue, "Add Value", "TEST Add Value",
               {{.key = "Amount", .name = "Amount", .minimum = -100, .maximum = 100, .size = 2}}),
        filter(2, addStamp, "Add Stamp"),
        filter(3, echo, "Echo"),
        filter(4, deepCopy, "Deep Copy (16)", "QULN Horizontal Flip"),
    };
    return filters;
}

std::shared_ptr<Picture> plainPicture(int width, int height, int value) {
    auto picture = std::make_shared<Picture>(width, height);
    for (int y = 0; y < height; ++y) std::memset(picture->row(y), value, static_cast<std::size_t>(4 * width));
    return picture;
}

}  // namespace vireo::test
