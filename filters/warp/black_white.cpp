// SPDX-License-Identifier: MIT
// Removes all colour. In "bgra" every pixel becomes its luma; in "vuya" luma is there already, and the chroma
// becomes neutral.
#include "filters/warp/black_white.h"

#include "framework/filter.h"
#include "framework/frame_view.h"
#include "framework/registration_order.h"
#include "framework/vpix_suites.h"
#include "host/pixkit/pixel_formats.h"

#include <cstring>

namespace BlackWhite {
namespace {

constexpr std::uint32_t formats[] = {PixKit::formatVuya, PixKit::formatBgra};

KernelChoice kernelChoice;

void portableGrey(const PixelRow& row) {
    const auto [source, destination, width, pastCaches] = row;
    for (std::int64_t i = 0; i < width; ++i) {
        std::uint32_t pixel;
        std::memcpy(&pixel, source + 4 * i, 4);
        pixel = greyPixel(pixel);
        std::memcpy(destination + 4 * i, &pixel, 4);
    }
}

std::uint32_t formatOf(const FilterInvocation& invocation) {
    const HostCallbacks* callbacks = invocation.hostCallbacks;
    const PixelFormatFunctions* functions = callbacks != nullptr ? callbacks->pixelFormat.get() : nullptr;
    if (functions != nullptr && functions->getPixelFormat.get() != nullptr) {
        return functions->getPixelFormat.get()(invocation.sourceFrame);
    }
    return QueryPixelFormat(ScopedVPix(invocation.sourceFrame));
}

std::int32_t render(const FilterInvocation& invocation, const NoSettings&) {
    const RowKernel row = formatOf(invocation) == PixKit::formatVuya
                              ? blackWhiteKernelsTables.chosen().neutralChroma
                              : greyKernel(kernelChoice);
    const FrameView source = frameOf(*invocation.sourceFrame);
    const FrameView destination = frameOf(*invocation.destFrame);
    forEachRow(source, destination,
               {wholePixels(source.rowBytes), wholePixels(destination.rowBytes), destination.width(),
                destination.height()},
               row);
    return 0;
}

constexpr FilterDeclaration<NoSettings> filter{
    .id = 10006,
    .formats = {formats},
    .render = render,
};

}  // namespace

RowKernel greyKernel(const KernelChoice& choice) {
    if (choice.best) return blackWhiteKernelsTables.chosen().grey;
    if (!choice.vector) return portableGrey;
    return blackWhiteKernelsTables.at(simd::InstructionSet::Baseline).grey;
}

void Register(VSK::PluginRegistry& registry) { registerFilter<filter>(registry); }

}  // namespace BlackWhite
