// SPDX-License-Identifier: MIT
// Frames that several threads render in bands, where the filter allows it.
#include "engine/chain/filter_chain.h"
#include "tests/engine/support/fake_filters.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

namespace vireo {
namespace {

/// A row of a frame, counted in memory.
std::uint8_t* rowOf(const FrameBuffer& frame, int y) {
    return static_cast<std::uint8_t*>(frame.pixels.get()) + std::ptrdiff_t{y} * frame.rowBytes;
}

/// Each byte less the rows `reach` above and below it; at the frame's edges it stands for these. Every
/// destination byte is written.
template <int reach>
std::int32_t subtractRows(void*, std::int16_t selector, FilterInvocation** handle) {
    if (selector != FilterSelectorExecute) return 0;
    const FilterInvocation& invocation = **handle;
    const FrameBuffer& source = *invocation.sourceFrame;
    const int height = source.bounds.bottom;
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* row = rowOf(source, y);
        const std::uint8_t* before = rowOf(source, y < reach ? y : y - reach);
        const std::uint8_t* behind = rowOf(source, y + reach < height ? y + reach : y);
        std::uint8_t* to = rowOf(*invocation.destFrame, y);
        for (int i = 0; i < 4 * source.bounds.right; ++i) {
            to[i] = static_cast<std::uint8_t>(3 * row[i] - before[i] - 5 * behind[i]);
        }
    }
    return 0;
}

hosting::Filter filter(FilterEntryProc entry, const char* name, const char* matchName) {
    hosting::PropertyList list;
    list.nameKey = std::string("$$$/Test/Filters/") + name + "/Name=" + name;
    list.name = name;
    list.matchName = matchName;
    return {1, entry, list};
}

/// Their match names are those of filters with these neighbours.
const std::vector<hosting::Filter>& filters() {
    static const std::vector<hosting::Filter> made = {
        filter(subtractRows<0>, "None", "QULN Solarize"),
        filter(subtractRows<1>, "One", "QULN Convolution Kernel"),
        filter(subtractRows<100>, "Hundred", "QULN Alpha Glow"),
        filter(subtractRows<3>, "Whole", "of no known filter"),
    };
    return made;
}

FilterChain chainOf(const std::vector<std::string>& names) {
    const Catalogue catalogue(filters());
    std::vector<FilterSettings> settings;
    for (const std::string& name : names) settings.push_back(parseFilterText(catalogue, name));
    return FilterChain(std::move(settings));
}

PicturePtr noise(int width, int height, std::int64_t rowBytes) {
    const auto picture = std::make_shared<Picture>(width, height, PixKit::formatBgra, rowBytes);
    std::minstd_rand random(static_cast<unsigned>(height));
    for (int y = 0; y < height; ++y) {
        for (int i = 0; i < 4 * width; ++i) picture->row(y)[i] = static_cast<std::uint8_t>(random() >> 7);
    }
    return picture;
}

PicturePtr render(const FilterChain& chain, const PicturePtr& source, const StageWork& work,
                  const std::shared_ptr<Picture>& target = nullptr) {
    const test::Clip clip({source});
    const auto memory = chain.newMemory(1);
    return chain.render({source, clip.position(0), clip, *memory, work, target});
}

bool areEqual(const Picture& a, const Picture& b) {
    for (int y = 0; y < a.height(); ++y) {
        if (std::memcmp(a.row(y), b.row(y), static_cast<std::size_t>(4 * a.width())) != 0) return false;
    }
    return true;
}

TEST(Bands, GiveTheBytesOfTheWholeFrame) {
    for (const std::vector<std::string>& names : std::vector<std::vector<std::string>>{
             {"None"}, {"One"}, {"Hundred"}, {"Whole"}, {"One", "Hundred", "None"}}) {
        const FilterChain chain = chainOf(names);
        for (const int height : {1, 15, 16, 31, 32, 33, 47, 48, 64, 301, 799, 800, 1601, 2500, 4000}) {
            for (const std::int64_t rowBytes : {64, 36, -40}) {
                const PicturePtr source = noise(9, height, rowBytes);
                const PicturePtr whole = render(chain, source, {});
                for (const int threads : {1, 2, 3, 8}) {
                    WorkerPool workers(threads);
                    const auto target = std::make_shared<Picture>(9, height, PixKit::formatBgra, rowBytes);
                    std::memset(target->row(rowBytes < 0 ? 0 : height - 1), 0x5A,
                                static_cast<std::size_t>(std::abs(rowBytes) * height));
                    EXPECT_EQ(render(chain, source, {&workers, {}}, target), target);
                    EXPECT_TRUE(areEqual(*whole, *target))
                        << names.front() << " on " << threads << ", " << height << " rows of " << rowBytes;
                }
            }
        }
    }
}

}  // namespace
}  // namespace vireo
