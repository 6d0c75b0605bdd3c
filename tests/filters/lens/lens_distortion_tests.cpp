// SPDX-License-Identifier: MIT
#include "filters/lens/lens_mapping.h"
#include "host/utilkit/utilkit.h"
#include "tests/filters/lens/lens_reference.h"
#include "tests/filters/plain_filter.h"
#include "tests/support/instruction_sets.h"

#include <array>

namespace {

using LensDistortion::Lens;
using LensDistortion::LensMapping;

constexpr std::uint32_t lensDistortionId = 10034;

struct Values {
    std::array<std::int16_t, 5> lens;  ///< In the order of storage.
    std::uint8_t fillAlpha = 1;
    std::uint32_t fillColor = 0x00102030;

    std::vector<std::uint8_t> bytes() const {
        std::vector<std::uint8_t> packed(16);
        std::memcpy(packed.data(), lens.data(), 10);
        packed[10] = fillAlpha;
        std::memcpy(packed.data() + 11, &fillColor, 4);
        return packed;
    }
};

/// The plain rule over the host's own fixed point, for pictures of fewer than 32768 pixels across.
struct ReferenceLens {
    std::int32_t c, vd, hd, vp, hp;
    ReferenceSteps steps;
    int width, height;
    std::int32_t radius, norm;

    ReferenceLens(const Values& values, int w, int h, const ReferenceSteps& stepsOfFrame)
        : c(scaled(values.lens[0], 0.01)),
          vd(scaled(values.lens[1], 0.005)),
          hd(scaled(values.lens[2], 0.005)),
          vp(scaled(values.lens[3], 0.01)),
          hp(scaled(values.lens[4], 0.01)),
          steps(stepsOfFrame),
          width(w * steps.x),
          height(h * steps.y),
          radius(static_cast<int>(std::hypot(width / 2, height / 2)) << 16),
          norm(FixedMul(FixedDiv(height / 2 << 16, 0xA0000), FixedDiv(width / 2 << 16, 0xA0000))) {}

    static std::int32_t scaled(int value, double unit) {
        const double product = value * unit;
        const auto whole = static_cast<int>(product);
        return whole * 65536 + static_cast<int>((product - whole) * 65536);
    }

    std::array<std::int64_t, 2> place(int column, int row) const {
        const int x = column * steps.x - width / 2, y = row * steps.y - height / 2;
        auto r = static_cast<std::int32_t>(std::sqrt(static_cast<long double>(x * x + y * y)) * 65536);
        const std::int32_t rn = FixedDiv(r, radius);
        const std::int32_t x10 = FixedDiv(x * 65536, 0xA0000), y10 = FixedDiv(y * 65536, 0xA0000);
        const std::int32_t xy = FixedMul(FixedMul(x10, y10), 0x20000);
        const std::int32_t x100 = FixedDiv(x10, 0xA0000), y100 = FixedDiv(y10, 0xA0000);
        // The sum is wider than the division's argument; here it always fits.
        const std::int32_t q =
            FixedDiv(FixedMul(y100, y100) + FixedMul(FixedMul(x100, x100), 0x30000), radius);
        const std::int32_t xs = FixedMul(x100, 6553600), ys = FixedMul(y100, 6553600);
        const std::int64_t sx = std::int64_t{FixedDiv(FixedMul(xy, hd), norm)} +
                                FixedMul(FixedMul(c, xs), rn) + FixedMul(FixedMul(vd, q), 655360000) +
                                FixedMul(vp, r) + xs + std::int64_t{width / 2} * 65536;
        const std::int64_t sy = std::int64_t{FixedDiv(FixedMul(xy, vd), norm)} +
                                FixedMul(FixedMul(c, ys), rn) + FixedMul(FixedMul(hd, q), 655360000) +
                                FixedMul(hp, r) + ys + std::int64_t{height / 2} * 65536;
        return {sx, sy};
    }
};

Picture distorted(TestFrame& frame, const Values& values, std::uint16_t fieldFlags) {
    const Picture source = frame.picture();
    const FrameRect& bounds = frame.handle()->bounds;
    const ReferenceLens lens(values, source.width, source.height, referenceSteps(fieldFlags));
    const bool neutral = values.lens == std::array<std::int16_t, 5>{};
    const std::uint32_t color = values.fillColor;
    const std::uint32_t fill =
        values.fillAlpha != 0 ? pixelOf(channelOf(color, 2), channelOf(color, 1), channelOf(color, 0), 255)
                              : 0;
    Picture result{source.width, source.height};
    for (int row = 0; row < source.height; ++row) {
        for (int column = 0; column < source.width; ++column) {
            auto [x, y] = lens.place(column, row);
            const bool edge = neutral && (row == 0 || column == 0);
            if (edge) {
                x = std::clamp<std::int64_t>(x, 0, (lens.width - 1) * std::int64_t{65536});
                y = std::clamp<std::int64_t>(y, 0, (lens.height - 1) * std::int64_t{65536});
            }
            x /= lens.steps.x;
            y /= lens.steps.y;
            const bool inside = x >= 0 && x < bounds.right * std::int64_t{65536} && y >= 0 &&
                                y < bounds.bottom * std::int64_t{65536} &&
                                x < source.width * std::int64_t{65536} &&
                                y < source.height * std::int64_t{65536};
            result.at(column, source.height - 1 - row) =
                inside ? referenceSample(source, fill, x, y, !edge) : fill;
        }
    }
    return result;
}

Values randomValues(Random& random, int range) {
    Values values{};
    for (auto& value : values.lens) {
        value = static_cast<std::int16_t>(static_cast<int>(random() % (2u * range + 1)) - range);
    }
    values.fillAlpha = static_cast<std::uint8_t>(random() % 2);
    return values;
}

TEST(LensDistortion, EqualsThePlainVersionOnAnyFrame) {
    expectEqualsPlain(lensDistortionId, [](FilterUnderTest& filter, Picture&, Random& random) {
        Values values{.lens = {}, .fillColor = 0x00FFFFFF};
        if (random() % 8 != 0) {
            values = random() % 4 == 0 ? Values{} : randomValues(random, 1 << random() % 15);
            filter.setSettings(values.bytes());
        }
        filter.invocation.fieldFlags = oneOf(fieldFlagCases, random);
        return [values, flags = std::uint16_t{filter.invocation.fieldFlags}](TestFrame& source) {
            return distorted(source, values, flags);
        };
    });
}

TEST(LensDistortionKernels, EverySetEqualsThePlainVersionUpToTheLargestFrames) {
    Random random(4);
    const int sizes[][2] = {{1, 8},       {7, 3},       {33, 9},      {720, 576},
                            {1920, 1080}, {3840, 2160}, {7680, 4320}, {8192, 8000}};
    for (const auto set : runnableInstructionSets()) {
        const LensDistortionKernels& kernels = lensDistortionKernelsTables.at(set);
        for (const auto& [width, height] : sizes) {
            for (int round = 0; round < 60; ++round) {
                const Values values = randomValues(random, round % 3 == 0 ? 1 << round % 8 : 100);
                const LensSteps steps = width > 4000 ? LensSteps{1, 1} : lensSteps(fieldFlagCases[round % 6]);
                const ReferenceLens reference(values, width, height, {steps.x, steps.y});
                const FrameView frame{nullptr, 0, {0, 0, width, height}};
                const Lens lens{reference.c, reference.vd, reference.hd, reference.vp, reference.hp};
                const LensMapping mapping(frame, lens, steps);
                if (!mapping.fitsKernels()) continue;
                const int columns =
                    static_cast<int>(random() % static_cast<unsigned>(std::min(width, 100))) + 1;
                const int first = static_cast<int>(random() % static_cast<unsigned>(width - columns + 1));
                const int row = static_cast<int>(random() % static_cast<unsigned>(height));
                const LensDistortion::TileColumns tile(mapping, first, columns);
                const int written = (columns + lensColumnBlock - 1) / lensColumnBlock * lensColumnBlock;
                std::vector<std::int32_t> x(static_cast<std::size_t>(written) + 1, 77), y = x;
                kernels.place(mapping.forKernels(), tile.forKernels(), rowForKernels(mapping.row(row)),
                              x.data(), y.data(), columns);
                for (int i = 0; i < columns; ++i) {
                    auto [placeX, placeY] = reference.place(first + i, row);
                    placeX /= steps.x;
                    placeY /= steps.y;
                    const bool inside =
                        placeX >= 0 && placeX >> 16 < width && placeY >= 0 && placeY >> 16 < height;
                    ASSERT_EQ(x[i], inside ? placeX >> 8 : -1)
                        << instructionSetName(set) << ' ' << width << " x " << height << " column "
                        << first + i << " row " << row;
                    ASSERT_EQ(y[i], inside ? placeY >> 8 : -1);
                }
                ASSERT_EQ(x[written], 77);
                ASSERT_EQ(y[written], 77);
            }
        }
    }
}

}  // namespace
