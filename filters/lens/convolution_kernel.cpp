// SPDX-License-Identifier: MIT
// Applies a 3 x 3 kernel with offset and scale through the host's service, and gives the source's alpha back
// unless alpha is to be processed too.
#include "filters/lens/convolution_kernel_kernels.h"
#include "framework/frame_view.h"
#include "framework/pixel_formats.h"
#include "framework/registration_order.h"
#include "framework/settings.h"
#include "framework/utility_services.h"

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

constexpr RecordSizes recordSizes{.workRecord = 48, .settings = 23};

constexpr Settings initialSettings{{0, 1, 0, 1, 2, 1, 0, 1, 0, 0, 6}, 1};

// An instance that never had settings renders with other values than a fresh one stores.
constexpr Settings settingsWithoutHandle{{1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}, 0};

constexpr std::array<std::uint32_t, 1> pixelFormats{PixKit::formatBgra};

const ConvolutionKernelKernels& kernels = convolutionKernelKernelsTables.chosen();

RememberedServices services;

void render(const UtilityServices& host, const FrameView& source, const FrameView& destination,
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

std::int32_t execute(const FilterInvocation& invocation) {
    const UtilityServices* host = services.get();
    if (host == nullptr || host->convolve3x3.get() == nullptr) return 0;
    render(*host, frameThroughPixKit(invocation.sourceFrame), frameThroughPixKit(invocation.destFrame),
           settingsOr(invocation, settingsWithoutHandle));
    return 0;
}

std::int32_t entry(void*, std::int16_t selector, FilterInvocation** invocation) {
    services.remember(**invocation);
    switch (selector) {
        case FilterSelectorExecute: return execute(**invocation);
        case FilterSelectorInitSettings: return initSettings(**invocation, recordSizes, initialSettings);
        case FilterSelectorGetPixelFormat: return namePixelFormat(**invocation, pixelFormats);
        case FilterSelectorGetFilterFlags: return filterFlags;
        default: return 0;
    }
}

}  // namespace

void Register(VSK::PluginRegistry& registry, std::uint32_t id) { registry.Add(id, entry, 10017); }

}  // namespace ConvolutionKernel
