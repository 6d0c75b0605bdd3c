// SPDX-License-Identifier: MIT
#include "filters/lens/lens_mapping.h"
#include "host/utilkit/utilkit.h"
#include "tests/filters/lens/plain_sampler.h"
#include "tests/filters/plain_filter.h"
#include "tests/support/instruction_sets.h"

#include <array>
#include <atomic>
#include <cmath>
#include <memory>
#include <thread>

namespace {

using LensDistortion::Lens;
using LensDistortion::LensMapping;

constexpr std::uint32_t lensDistortionId = 10034;

/// Curvature, vertical and horizontal decentering, vertical and horizontal prism.
using Values = std::array<std::int16_t, 5>;

/// The rule for a pixel so far from the centre, over the host's own fixed point.
PlainPlace distorted(const Values& values, int halfWidth, int halfHeight, int x, int y) {
    constexpr int ten = 10 * 65536;
    const auto scaled = [](int value, double unit) { return static_cast<int>(value * unit * 65536); };
    const int curvature = scaled(values[0], 0.01);
    const int vertical = scaled(values[1], 0.005), horizontal = scaled(values[2], 0.005);
    const auto tenth = [](int pixels) { return FixedDiv(pixels * 65536, ten); };
    const int radius = static_cast<int>(std::hypot(halfWidth, halfHeight)) * 65536;
    const int norm = FixedMul(tenth(halfHeight), tenth(halfWidth));
    const int distance = static_cast<int>(std::sqrt(static_cast<long double>(x * x + y * y)) * 65536);
    const int product = FixedMul(FixedMul(tenth(x), tenth(y)), 2 * 65536);
    const int x100 = FixedDiv(tenth(x), ten), y100 = FixedDiv(tenth(y), ten);
    const int squares = FixedDiv(FixedMul(y100, y100) + FixedMul(FixedMul(x100, x100), 3 * 65536), radius);
    const auto along = [&](int hundredth, int half, int own, int other, int prism) {
        const int whole = FixedMul(hundredth, 100 * 65536);
        return std::int64_t{half * 65536 + whole} + FixedDiv(FixedMul(product, other), norm) +
               FixedMul(FixedMul(curvature, whole), FixedDiv(distance, radius)) +
               FixedMul(FixedMul(own, squares), 10000 * 65536) + FixedMul(prism, distance);
    };
    return {along(x100, halfWidth, vertical, horizontal, scaled(values[3], 0.01)),
            along(y100, halfHeight, horizontal, vertical, scaled(values[4], 0.01))};
}

TEST(LensDistortion, EqualsThePlainVersionOnAnyFrame) {
    expectEqualsPlain(lensDistortionId, [](FilterUnderTest& filter, Picture&, Random& random) {
        const int range = random() % 4 == 0 ? 0 : 1 << random() % 15;
        Values values;
        for (std::int16_t& value : values) value = between(-range, range, random);
        if (random() % 4 == 0) values = {values[0]};  // only bends
        const bool opaque = random() % 2 == 0;
        const auto color = static_cast<std::uint32_t>(random());
        std::array<std::uint8_t, 16> record{};
        std::memcpy(record.data(), values.data(), 10);
        record[10] = opaque;
        std::memcpy(record.data() + 11, &color, 4);
        filter.setSettings(record);
        const PlainSteps steps = plainSteps(filter.invocation.fieldFlags);
        return [=](const TestFrame& source) {
            const Geometry& frame = source.geometry();
            const int halfWidth = frame.width * steps.x / 2, halfHeight = frame.height * steps.y / 2;
            return plainlySampled(source.picture(), opaque, color, [&](int column, int row) {
                PlainPlace place = distorted(values, halfWidth, halfHeight, column * steps.x - halfWidth,
                                             row * steps.y - halfHeight);
                // Where a lens bends nothing, the first row and column stay inside.
                if (values == Values{} && (row == 0 || column == 0))
                    place = {std::max(place.x, std::int64_t{}), std::max(place.y, std::int64_t{}), false};
                place.x /= steps.x;
                place.y /= steps.y;
                const bool isSeen =
                    place.x >> 16 < frame.left + frame.width && place.y >> 16 < frame.top + frame.height;
                return isSeen ? place : PlainPlace{-1, -1};
            });
        };
    });
}

/// A frame like the one before is rendered from positions that were kept.
TEST(LensDistortion, RendersTheSameOverAndOverWhateverComesBetween) {
    struct Shot {
        std::array<std::uint8_t, 16> record{};
        TestFrame source;
        std::uint16_t fieldFlags = 0;
        Picture first{};

        Shot(Random& random, const Geometry& geometry) : source(geometry, random) {
            for (std::size_t i = 0; i < 10; i += 2) record[i] = static_cast<std::uint8_t>(random() % 30);
        }
        Picture rendered() {
            FilterUnderTest filter(lensDistortionId);
            filter.setSettings(record);
            filter.invocation.fieldFlags = fieldFlags;
            return filter.rendered(source);
        }
    };
    Random random(9);
    std::vector<std::unique_ptr<Shot>> shots;
    for (const Geometry& geometry : {Geometry{.width = 530, .height = 40}, {.width = 530, .height = 41}}) {
        for (int i = 0; i < 2; ++i) shots.push_back(std::make_unique<Shot>(random, geometry));
    }
    shots[1]->record = shots[0]->record;
    shots[1]->fieldFlags = FieldFlagUpper;
    for (const auto& shot : shots) shot->first = shot->rendered();
    for (int i = 0; i < 60; ++i) {
        Shot& shot = *shots[random() % shots.size()];
        for (int j = random() % 4; j >= 0; --j) ASSERT_TRUE(samePicture(shot.first, shot.rendered()));
    }
    std::vector<std::thread> threads;
    std::atomic<int> different = 0;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            Shot& shot = *shots[static_cast<std::size_t>(i) / 2];
            TestFrame own(shot.source.geometry(), shot.source.picture());
            for (int round = 0; round < 20; ++round) {
                FilterUnderTest filter(lensDistortionId);
                filter.setSettings(shot.record);
                filter.invocation.fieldFlags = shot.fieldFlags;
                different += samePicture(shot.first, filter.rendered(own)) ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(different, 0);
}

Lens randomLens(Random& random, int range) {
    const auto any = [&](double unit) { return Lens::scaled(between(-range, range, random), unit); };
    return {any(0.01), any(0.005), any(0.005), any(0.01), any(0.01)};
}

/// Part of a row, as the kernels place it and as the rule does, pixel by pixel.
void expectFollowsTheRule(const LensDistortionKernels& kernels, const LensMapping& mapping, int first,
                          int columns, int row) {
    const LensDistortion::TileColumns tile(mapping, first, columns);
    const int written = (columns + lensColumnBlock - 1) / lensColumnBlock * lensColumnBlock;
    std::vector<std::int32_t> x(static_cast<std::size_t>(written) + 1, 77), y = x;
    kernels.place(mapping.forKernels(), tile.forKernels(), rowForKernels(mapping.row(row)), x.data(),
                  y.data(), columns);
    for (int i = 0; i < columns; ++i) {
        std::int32_t ruleX, ruleY;
        mapping.position(mapping.place(mapping.column(first + i), mapping.row(row)), &ruleX, &ruleY);
        ASSERT_EQ(x[i], ruleX) << "column " << first + i << " row " << row;
        ASSERT_EQ(y[i], ruleY) << "column " << first + i << " row " << row;
    }
    ASSERT_EQ(x[written], 77);
    ASSERT_EQ(y[written], 77);
}

TEST(LensDistortionKernels, EverySetFollowsTheRuleUpToTheLargestFrames) {
    constexpr std::uint16_t fieldFlags[] = {0, FieldFlagUpper, FieldFlagLower, 0x0400, 0x0800, 0x0500};
    const int sizes[][2] = {{1, 8},       {7, 3},       {33, 9},      {720, 576},
                            {1920, 1080}, {3840, 2160}, {7680, 4320}, {8192, 8000}};
    Random random(4);
    for (const auto set : runnableInstructionSets()) {
        for (const auto& [width, height] : sizes) {
            SCOPED_TRACE(std::string(instructionSetName(set)) + ", " + std::to_string(width) + " wide");
            for (int round = 0; round < 60; ++round) {
                const Lens lens = randomLens(random, round % 3 == 0 ? 1 << round % 8 : 100);
                const LensSteps steps = width > 4000 ? LensSteps{1, 1} : lensSteps(fieldFlags[round % 6]);
                const LensMapping mapping({nullptr, 0, {0, 0, width, height}}, lens, steps);
                if (!mapping.fitsKernels()) continue;
                const int columns = 1 + static_cast<int>(random() % std::min(width, 100));
                const int first = static_cast<int>(random() % static_cast<unsigned>(width - columns + 1));
                const int row = static_cast<int>(random() % static_cast<unsigned>(height));
                expectFollowsTheRule(lensDistortionKernelsTables.at(set), mapping, first, columns, row);
                if (HasFatalFailure()) return;
            }
        }
    }
}

}  // namespace
