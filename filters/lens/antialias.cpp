// SPDX-License-Identifier: MIT
// Averages every pixel with its four neighbours by halving sums in a fixed order, so that the pixel in the
// next row weighs most. Up and down are the rows before and after in memory.
#include "filters/lens/antialias_average.h"
#include "filters/lens/antialias_kernels.h"
#include "framework/filter.h"
#include "framework/frame_view.h"
#include "framework/registration_order.h"
#include "host/pixkit/pixel_formats.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>

namespace Antialias {
namespace {

constexpr std::array<std::uint32_t, 2> formats{PixKit::formatVuya, PixKit::formatBgra};

const AntialiasKernels& kernels = antialiasKernelsTables.chosen();

std::uint32_t pixelAt(const std::uint8_t* row, std::int64_t column) {
    std::uint32_t pixel;
    std::memcpy(&pixel, row + bytesPerPixel * column, sizeof pixel);
    return pixel;
}

void setPixel(std::uint8_t* row, std::int64_t column, std::uint32_t pixel) {
    std::memcpy(row + bytesPerPixel * column, &pixel, sizeof pixel);
}

/// A neighbour that is missing is replaced by the pixel, but the first column's chain is a step shorter.
void averageRow(const std::uint8_t* up, const std::uint8_t* centre, const std::uint8_t* down,
                std::uint8_t* destination, std::int64_t width) {
    const std::int64_t last = width - 1;
    if (width > 1) {
        const std::uint32_t start = halfway(pixelAt(centre, 0), pixelAt(centre, 1));
        setPixel(destination, 0, halfway(halfway(start, pixelAt(up, 0)), pixelAt(down, 0)));
        kernels.row(up + bytesPerPixel, centre + bytesPerPixel, down + bytesPerPixel,
                    destination + bytesPerPixel, width - 2);
    }
    const std::uint32_t pixel = pixelAt(centre, last);
    const std::uint32_t start = halfway(halfway(pixelAt(centre, last > 0 ? last - 1 : 0), pixel), pixel);
    setPixel(destination, last, halfway(halfway(start, pixelAt(up, last)), pixelAt(down, last)));
}

std::int32_t render(const FilterInvocation& invocation, const NoSettings&) {
    const FrameView source = frameOf(*invocation.sourceFrame);
    const FrameView destination = frameOf(*invocation.destFrame);
    // Both frames are walked with the destination's geometry, of which only 16 bits count.
    const auto narrow = [](std::int64_t value) { return std::int64_t{static_cast<std::int16_t>(value)}; };
    const std::int64_t stride = narrow(destination.rowBytes / bytesPerPixel) * bytesPerPixel;
    const std::int64_t width = narrow(destination.width());
    const std::int64_t height = narrow(destination.height());
    const FrameExtent sourceExtent(source);
    const FrameExtent destinationExtent(destination);

    std::unique_ptr<std::uint8_t[]> completed[2];
    for (std::int64_t y = 0; y < height; ++y) {
        const std::int64_t fitting = std::min(sourceExtent.fitting(y * stride, width, bytesPerPixel),
                                              destinationExtent.fitting(y * stride, width, bytesPerPixel));
        if (fitting <= 0) continue;
        const std::uint8_t* centre = source.pixels + y * stride;
        // Where the source ends, a neighbouring row is completed with the pixels beside it, or replaced by
        // them without memory.
        const auto neighbour = [&](std::int64_t row, std::unique_ptr<std::uint8_t[]>& buffer) {
            if (row < 0 || row >= height) return centre;
            const std::int64_t present = sourceExtent.fitting(row * stride, fitting, bytesPerPixel);
            const std::uint8_t* pixels = source.pixels + row * stride;
            if (present == fitting) return pixels;
            const std::int64_t length = fitting * bytesPerPixel;
            buffer.reset(new (std::nothrow) std::uint8_t[static_cast<std::size_t>(length)]);
            if (buffer == nullptr) return centre;
            std::copy_n(centre, length, buffer.get());
            std::copy_n(pixels, present * bytesPerPixel, buffer.get());
            return static_cast<const std::uint8_t*>(buffer.get());
        };
        averageRow(neighbour(y - 1, completed[0]), centre, neighbour(y + 1, completed[1]),
                   destination.pixels + y * stride, fitting);
    }
    return 0;
}

constexpr FilterDeclaration<NoSettings> filter{
    .id = 10002,
    .formats = {formats},
    .render = render,
};

}  // namespace

void Register(VSK::PluginRegistry& registry) { registerFilter<filter>(registry); }

}  // namespace Antialias
