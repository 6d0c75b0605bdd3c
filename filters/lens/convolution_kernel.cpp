// SPDX-License-Identifier: MIT
// Applies a 3 x 3 kernel with offset and scale through the host's service, and gives the source's alpha back
// unless alpha is to be processed too.
#include "filters/lens/convolution_kernel_kernels.h"
#include "framework/filter.h"
#include "framework/frame_view.h"
#include "framework/registration_order.h"
#include "host/pixkit/pixel_formats.h"

#include <array>
#include <limits>

namespace ConvolutionKernel {
namespace {

struct Settings {
    std::array<std::int16_t, 11> record;  ///< M11 to M33 by rows, offset, scale: as the service reads them.
    std::uint8_t processAlpha;

    template <class Visit>
    void fields(Visit&& visit) {
        visit(record);
        visit(processAlpha);
    }
};

constexpr std::array<std::uint32_t, 1> formats{PixKit::formatBgra};

const ConvolutionKernelKernels& kernels = convolutionKernelKernelsTables.chosen();

RememberedServices services;

void convolve(const UtilityServices& host, const FrameView& source, const FrameView& destination,
              const Settings& settings) {
    // Both frames are walked with the destination's geometry.
    const RowWalk walk{destination.rowBytes, destination.rowBytes, destination.width(), destination.height()};
    forEachBlock(source, destination, walk,
                 [&](const std::uint8_t* from, std::uint8_t* to, std::int64_t width, std::int64_t rows) {
                     constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
                     host.convolve3x3.get()(from, to, settings.record.data(), destination.rowBytes,
                                            static_cast<std::int32_t>(std::min(width, most)),
                                            static_cast<std::int32_t>(std::min(rows, most)));
                 });
    if (settings.processAlpha == 0) forEachRow(source, destination, walk, kernels.copyAlpha);
}

std::int32_t render(const FilterInvocation& invocation, const Settings& settings) {
    const UtilityServices* host = services.get();
    if (host == nullptr || host->convolve3x3.get() == nullptr) return 0;
    convolve(*host, frameThroughPixKit(invocation.sourceFrame), frameThroughPixKit(invocation.destFrame),
             settings);
    return 0;
}

constexpr FilterDeclaration<Settings> filter{
    .id = 10017,
    .initialSettings = {{0, 1, 0, 1, 2, 1, 0, 1, 0, 0, 6}, 1},
    .settingsWithoutHandle = Settings{{1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}, 0},
    .settingsBytes = 23,
    .workRecord = {.bytes = 48},
    .formats = {formats},
    .services = &services,
    .render = render,
};

}  // namespace

void Register(VSK::PluginRegistry& registry) { registerFilter<filter>(registry); }

}  // namespace ConvolutionKernel
