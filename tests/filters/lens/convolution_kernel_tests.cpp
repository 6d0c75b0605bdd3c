// SPDX-License-Identifier: MIT
#include "host/vireo_host.h"
#include "tests/filters/plain_filter.h"

#include <array>

namespace {

constexpr std::uint32_t convolutionKernelId = 10017;

TEST(ConvolutionKernel, CallsTheServiceAndGivesAlphaBack) {
    expectEqualsPlain(convolutionKernelId, [](FilterUnderTest& filter, Picture&, Random& random) {
        std::array<std::int16_t, 12> record;  // The last one's low byte tells whether alpha is processed.
        for (std::int16_t& value : record) value = static_cast<std::int16_t>(random() % 61 - 30);
        record[11] = static_cast<std::int16_t>(random() % 2);
        filter.setRecord(record);
        return [record](const TestFrame& frame) {
            const Picture source = frame.picture();
            Picture result = source;
            static_cast<const UtilityServices*>(vireoHostServices())
                ->convolve3x3.get()(source.pixels.data(), result.pixels.data(), record.data(),
                                    4 * source.width, source.width, source.height);
            for (std::size_t i = 0; record[11] == 0 && i < result.pixels.size(); ++i) {
                result.pixels[i] = (result.pixels[i] & 0xFFFFFF) | (source.pixels[i] & 0xFF000000);
            }
            return result;
        };
    });
}

}  // namespace
