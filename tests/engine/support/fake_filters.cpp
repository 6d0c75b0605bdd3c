// SPDX-License-Identifier: MIT
#include "tests/engine/support/fake_filters.h"

#include "host/pixkit/pixkit.h"

#include <algorithm>
#include <cstring>

namespace vireo::test {
namespace {

std::uint8_t* pixels(FrameBuffer& buffer) { return static_cast<std::uint8_t*>(buffer.pixels.get()); }

template <class Change>
void forEachPixel(const FilterInvocation& invocation, Change change) {
    FrameBuffer& source = *invocation.sourceFrame;
    FrameBuffer& destination = *invocation.destFrame;
    for (int y = 0; y < source.bounds.bottom; ++y) {
        for (int x = 0; x < source.bounds.right; ++x) {
            const std::ptrdiff_t offset = std::ptrdiff_t{y} * source.rowBytes + 4 * x;
            change(pixels(source) + offset, pixels(destination) + offset, offset);
        }
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
        forEachPixel(invocation, [amount](const std::uint8_t* from, std::uint8_t* to, std::ptrdiff_t) {
            to[0] = static_cast<std::uint8_t>(from[0] + amount);
        });
    }
    return 0;
}

std::int32_t addStamp(void*, std::int16_t selector, FilterInvocation** handle) {
    const FilterInvocation& invocation = **handle;
    if (selector != FilterSelectorExecute) return 0;
    forEachPixel(invocation, [&](const std::uint8_t*, std::uint8_t* to, std::ptrdiff_t) {
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
    const int rowDifference = earlier->rowBytes - invocation.sourceFrame->rowBytes;
    forEachPixel(invocation, [&](const std::uint8_t* from, std::uint8_t* to, std::ptrdiff_t offset) {
        const std::ptrdiff_t row = offset / invocation.sourceFrame->rowBytes;
        to[0] = static_cast<std::uint8_t>(10 * from[0] - pixels(*earlier)[offset + row * rowDifference]);
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

hosting::Parameter amount() {
    hosting::Parameter made;
    made.key = made.name = "Amount";
    made.kind = hosting::ParameterKind::Number;
    made.minimum = -100;
    made.maximum = made.displayMaximum = 100;
    made.size = 2;
    return made;
}

hosting::Filter filter(std::uint32_t id, FilterEntryProc entry, const char* name, const char* segment,
                       std::vector<hosting::Parameter> parameters = {}, const char* matchName = nullptr) {
    hosting::PropertyList list;
    list.nameKey = "$$$/Test/Filters/" + std::string(segment) + "/Name=" + name;
    list.name = name;
    list.matchName = matchName != nullptr ? matchName : "TEST " + std::string(name);
    list.parameters = std::move(parameters);
    return {id, entry, list};
}

}  // namespace

const std::vector<hosting::Filter>& fakeFilters() {
    static const std::vector<hosting::Filter> filters = {
        filter(1, addValue, "Add Value", "AddValue", {amount()}),
        filter(2, addStamp, "Add Stamp", "Stamper"),
        filter(3, echo, "Echo", "Echo"),
        filter(4, deepCopy, "Deep Copy (16)", "DeepCopy", {}, "QULN Horizontal Flip"),
    };
    return filters;
}

PicturePtr plainPicture(int width, int height, std::uint8_t blue, std::uint8_t green, std::uint8_t red) {
    const auto picture = std::make_shared<Picture>(width, height);
    const std::uint8_t pixel[] = {blue, green, red, 255};
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) std::memcpy(picture->row(y) + 4 * x, pixel, sizeof pixel);
    }
    return picture;
}

PicturePtr Clip::frame(std::int64_t number) const {
    return frames_.at(static_cast<std::size_t>(std::max<std::int64_t>(number, 0)));
}

FramePosition Clip::position(std::int64_t number) const {
    return {number, static_cast<std::int64_t>(frames_.size()), static_cast<double>(number) / 25, 25,
            interlacing_};
}

}  // namespace vireo::test
