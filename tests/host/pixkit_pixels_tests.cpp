// SPDX-License-Identifier: MIT
#include "host/vrm/suites.h"
#include "tests/host/test_buffer.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

TEST(VpixFillRect, WritesTheWordInsideRectangleAndBoundsOnly) {
    std::mt19937 random(1);
    const FrameRect bounds{-2, 3, 5, 8};
    for (const std::int32_t rowBytes : {28, 40, -28, -44}) {
        for (const FrameRect& rect : {FrameRect{-2, 3, 5, 8},
                                      {0, 4, 3, 6},
                                      {-9, -9, 0, 99},
                                      {minimum, minimum, maximum, maximum},
                                      {3, 5, 3, 9},
                                      {4, 6, 1, 7},
                                      {5, 3, 9, 8},
                                      {-9, 0, 9, 3},
                                      {0, maximum, 3, minimum}}) {
            Memory memory = noise(1024, random);
            Memory expected = memory;
            TestBuffer buffer(memory, 512, bounds, rowBytes);
            const std::uint32_t color = 0x80C1D2E3;
            for (int y = bounds.top; y < bounds.bottom; ++y) {
                for (int x = bounds.left; x < bounds.right; ++x) {
                    if (x < rect.left || x >= rect.right || y < rect.top || y >= rect.bottom) continue;
                    std::memcpy(expected.data() + buffer.offset(x, y), &color, 4);
                }
            }
            vpixFillRect(buffer.handle(), &rect, color);
            EXPECT_EQ(memory, expected) << rect << ", row bytes " << rowBytes;
        }
    }
}

TEST(VPixSuites, GiveAndTakeTheHostsBuffers) {
    const FrameRect bounds{0, 0, 3, 2};
    for (const auto& [name, version] :
         {std::pair(VIREO_VPIX_SUITE, 1), {VIREO_VPIX_CREATOR_SUITE, 1}, {VIREO_VPIX_CREATOR_2_SUITE, 3}}) {
        const void* found = nullptr;
        ASSERT_EQ(vrmAcquireSuite(name, version, &found), 0) << name;
        const auto& suite = *static_cast<const VPixSuite*>(found);
        FrameBuffer* const buffer = vpixNew(&bounds);
        vireoHostSetPixelFormat(buffer, PixKit::formatVuya);
        std::uint32_t format = 0;
        EXPECT_EQ(suite.getPixelFormat.get()(buffer, &format), 0);
        EXPECT_EQ(format, PixKit::formatVuya);
        EXPECT_EQ(suite.dispose.get()(buffer), 0);
        EXPECT_EQ(vrmAcquireSuite(name, version + 1, &found), -1);
        EXPECT_EQ(found, nullptr);
    }
}

TEST(VpixGetPixel, CountsRowsFromTheTopOfThePicture) {
    std::mt19937 random(2);
    Memory memory = noise(1024, random);
    TestBuffer buffer(memory, 512, {-2, 3, 5, 8}, -40);
    for (const auto& [x, y] : {std::pair{-2, 3}, {4, 7}, {0, 5}}) {
        std::uint32_t word = 0;
        std::memcpy(&word, memory.data() + buffer.offset(x, y), 4);
        EXPECT_EQ(vpixGetPixel(buffer.handle(), x, y), word) << x << ", " << y;
    }
    for (const auto& [x, y] :
         {std::pair{-3, 3}, {5, 3}, {0, 2}, {0, 8}, {minimum, maximum}, {maximum, minimum}}) {
        EXPECT_EQ(vpixGetPixel(buffer.handle(), x, y), 0U) << x << ", " << y;
    }
}

TEST(VpixNew, MakesZeroedAlignedRows) {
    for (const FrameRect& bounds : {FrameRect{-3, 2, 14, 7},
                                    {0, 0, 1100, 1000},
                                    {0, 0, 1000, 1000},
                                    {-7, 0, 2000, 1500},
                                    {0, 0, 3, 3}}) {
        FrameBuffer* buffer = vpixNew(&bounds);
        ASSERT_NE(buffer, nullptr);
        FrameRect told{};
        vpixGetBounds(buffer, &told);
        EXPECT_EQ(std::memcmp(&told, &bounds, sizeof told), 0);
        EXPECT_GE(vpixGetRowbytes(buffer), (bounds.right - bounds.left) * 4);
        EXPECT_EQ(vpixGetRowbytes(buffer) % 64, 0);
        void* locked = nullptr;
        vpixLockPixels(buffer, &locked);
        EXPECT_EQ(locked, vpixGetPixels(buffer));
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(locked) % 64, 0U);
        auto* const bytes = static_cast<std::uint8_t*>(locked);
        const std::ptrdiff_t size = std::ptrdiff_t{bounds.bottom - bounds.top} * vpixGetRowbytes(buffer);
        EXPECT_EQ(std::count(bytes, bytes + size, 0), size) << bounds;
        std::fill_n(bytes, size, std::uint8_t{0xA5});  // Which the next must not show.
        vpixUnlockPixels(buffer);
        vpixDispose(buffer);
        vpixDispose(nullptr);
    }
}

TEST(VpixNew, RefusesWhatIsEmptyOrTooLarge) {
    for (const FrameRect& rect : {FrameRect{0, 0, 0, 5},
                                  {0, 0, 5, 0},
                                  {5, 0, 0, 5},
                                  {minimum, 0, maximum, 1},
                                  {0, minimum, 0x1FFFFFFF, maximum},
                                  {maximum, 0, minimum, 1}})
        EXPECT_EQ(vpixNew(&rect), nullptr) << rect;
}

TEST(PixelFormats, AreForgottenWithTheBuffer) {
    const FrameRect bounds{0, 0, 4, 4};
    FrameBuffer* buffer = vpixNew(&bounds);
    vireoHostSetPixelFormat(buffer, PixKit::formatCode("Vuya"));
    EXPECT_EQ(PixKit::pixelFormat(buffer), PixKit::formatCode("Vuya"));
    vpixDispose(buffer);
    EXPECT_EQ(PixKit::pixelFormat(buffer), PixKit::formatBgra);
}

}  // namespace
