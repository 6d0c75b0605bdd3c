// SPDX-License-Identifier: MIT
#include "filters/lens/horizontal_flip_kernels.h"
#include "framework/vpix_suites.h"
#include "host/pixkit/pixel_formats.h"
#include "host/vireo_host.h"
#include "tests/support/filter_under_test.h"

namespace {

constexpr std::uint32_t horizontalFlipId = 10030;

/// A format of a frame, told to the host while it lives.
class FormatOf {
public:
    FormatOf(TestFrame& frame, std::uint32_t code) : handle_(frame.handle()) {
        vireoHostSetPixelFormat(handle_, code);
    }
    FormatOf(const FormatOf&) = delete;
    FormatOf& operator=(const FormatOf&) = delete;
    ~FormatOf() { vireoHostSetPixelFormat(handle_, PixKit::formatBgra); }

private:
    FrameBuffer* handle_;
};

struct FormatCase {
    std::uint32_t code;
    int pixelBytes;
};

const FormatCase formatCases[] = {
    {PixKit::formatCode("VUya"), 16}, {PixKit::formatCode("BGra"), 16}, {PixKit::formatCode("ARgb"), 16},
    {PixKit::formatCode("Vuya"), 8},  {PixKit::formatCode("Bgra"), 8},  {PixKit::formatCode("Argb"), 8},
    {PixKit::formatCode("vuya"), 4},  {PixKit::formatCode("argb"), 4},  {PixKit::formatCode("bgra"), 4},
};

TEST(HorizontalFlip, MirrorsWholePixelsOfEveryFormat) {
    Random random(1);
    FilterUnderTest filter(horizontalFlipId);
    for (const FormatCase& format : formatCases) {
        for (Geometry geometry : awkwardGeometries()) {
            geometry.pixelBytes = format.pixelBytes;
            TestFrame source(geometry, random);
            geometry.padding += 3;  // Each frame steps by its own row bytes.
            TestFrame destination(geometry);
            const FormatOf told(source, format.code);
            filter.render(source, destination);
            ASSERT_TRUE(destination.guardsHold());
            for (int y = 0; y < geometry.height; ++y) {
                for (int x = 0; x < geometry.width; ++x) {
                    ASSERT_EQ(std::memcmp(destination.row(y) + x * format.pixelBytes,
                                          source.row(y) + (geometry.width - 1 - x) * format.pixelBytes,
                                          static_cast<std::size_t>(format.pixelBytes)),
                              0)
                        << geometry << ", column " << x << ", row " << y;
                }
            }
        }
    }
}

TEST(HorizontalFlip, LeavesTheDestinationOfUnknownFormatsAlone) {
    Random random(2);
    FilterUnderTest filter(horizontalFlipId);
    for (const std::uint32_t code : {PixKit::formatCode("badf"), PixKit::formatCode("BGRA"), 0u}) {
        TestFrame source({.width = 9, .height = 3}, random);
        TestFrame destination({.width = 9, .height = 3}, random);
        const Picture before = destination.picture();
        const FormatOf told(source, code);
        filter.render(source, destination);
        EXPECT_TRUE(samePicture(before, destination.picture()));
    }
}

TEST(HorizontalFlip, SmallerSourceLeavesTheRestAlone) {
    Random random(3);
    TestFrame source({.width = 6, .height = 2}, random);
    TestFrame destination({.width = 9, .height = 3});
    FilterUnderTest filter(horizontalFlipId);
    source.handle()->bounds.bottom = 1;
    filter.render(source, destination);
    Picture expected{9, 3};
    for (int x = 0; x < 6; ++x) expected.at(8 - x, 0) = source.picture().at(x, 0);
    EXPECT_TRUE(samePicture(expected, destination.picture()));
}

TEST(HorizontalFlip, EndsTheListWithItsOwnCode) {
    FilterUnderTest filter(horizontalFlipId);
    for (const std::uint32_t index : {9u, 10u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        filter.invocation.pixelFormat = 0;
        filter.invocation.pixelFormatIndex = index;
        EXPECT_EQ(filter.call(FilterSelectorGetPixelFormat), 1);
        EXPECT_EQ(std::uint32_t{filter.invocation.pixelFormat}, PixKit::formatCode("badf"));
    }
}

TEST(HorizontalFlipKernels, EverySetReversesAnyWidth) {
    Random random(4);
    for (const auto set : runnableInstructionSets()) {
        const HorizontalFlipKernels& kernels = horizontalFlipKernelsTables.at(set);
        struct Case {
            HorizontalFlipKernels::Row row;
            int size;
            int begin;  // Bytes from an aligned address to the first pixel written.
        };
        const Case cases[] = {{kernels.row4, 4, 3},           {kernels.row8, 8, 3},
                              {kernels.row16, 16, 3},         {kernels.row4PastCaches, 4, 3},
                              {kernels.row4PastCaches, 4, 4}, {kernels.row4PastCaches, 4, 0}};
        for (const auto& [row, size, begin] : cases) {
            for (int width = 0; width < 140; ++width) {
                const auto bytes = static_cast<std::size_t>(width * size);
                std::vector<std::uint8_t> from(bytes + 5), to(bytes + 7, 0x5A), expected = to;
                for (auto& byte : from) byte = static_cast<std::uint8_t>(random());
                for (int x = 0; x < width; ++x) {
                    std::memcpy(expected.data() + begin + x * size, from.data() + 5 + (width - 1 - x) * size,
                                static_cast<std::size_t>(size));
                }
                row(from.data() + 5, to.data() + begin, width);
                ASSERT_EQ(to, expected) << instructionSetName(set) << ", width " << width << ", size " << size
                                        << ", " << begin << " bytes from alignment";
            }
        }
    }
}

}  // namespace
