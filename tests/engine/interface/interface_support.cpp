// SPDX-License-Identifier: MIT
#include "tests/engine/interface/interface_support.h"

#include "engine/locations.h"

#include <algorithm>
#include <cstring>
#include <ostream>

namespace vireo::test {
namespace {

constexpr std::size_t guardBytes = 64;

}  // namespace

VireoEngine* engine() {
    static VireoEngine* const opened = [] {
        VireoEngine* made = nullptr;
        EXPECT_EQ(vireoOpen(nullptr, &made), VireoDone) << sentence();
        return made;
    }();
    return opened;
}

ChainHandle newChain(const std::string& text) {
    VireoChain* chain = nullptr;
    EXPECT_EQ(vireoChainNew(engine(), &chain), VireoDone) << sentence();
    EXPECT_EQ(vireoChainAddText(chain, text.c_str()), VireoDone) << sentence();
    return {chain, vireoChainClose};
}

ChainHandle copyOf(const ChainHandle& chain) {
    VireoChain* copy = nullptr;
    EXPECT_EQ(vireoChainCopy(chain.get(), &copy), VireoDone) << sentence();
    return {copy, vireoChainClose};
}

StreamHandle newStream(const ChainHandle& chain) {
    VireoStream* stream = nullptr;
    EXPECT_EQ(vireoStreamNew(chain.get(), &stream), VireoDone) << sentence();
    return {stream, vireoStreamClose};
}

std::string sentence() { return vireoLastError()->sentence; }

std::string textOf(const ChainHandle& chain, VireoSpelling spelling) {
    return textFrom([&](char** text) { return vireoChainText(chain.get(), spelling, text); });
}

FilterChain engineChain(const std::string& text) {
    static const auto module = hosting::MetaPlugin::shared(findModule(""));
    static const Catalogue catalogue(module->filters());
    return FilterChain(parseChainText(catalogue, text));
}

VireoTime moment(std::int64_t frame, std::int64_t frames, int interlacing) {
    return {sizeof(VireoTime), interlacing, frame, frames, 25, -1};
}

std::ostream& operator<<(std::ostream& out, const Lie& lie) {
    return out << "layout " << lie.layout << ", depth " << lie.depth
               << (lie.premultiplied ? ", premultiplied" : "") << (lie.isBottomUp ? ", bottom-up" : "")
               << ", gap " << lie.gap;
}

Pixels::Pixels(int width, int height, const Lie& lie, std::uint32_t seed)
    : frame{sizeof frame, width, height, lie.layout, lie.depth, lie.premultiplied, nullptr, 0, nullptr},
      guard_(static_cast<std::uint8_t>(0xA5 + seed)) {
    const std::size_t step = rowBytes() + static_cast<std::size_t>(lie.gap);
    const auto rows = static_cast<std::size_t>(height);
    memory_.assign(step * rows + 2 * guardBytes, guard_);
    frame.pixels = memory_.data() + guardBytes + (lie.isBottomUp ? step * (rows - 1) : 0);
    frame.stride = static_cast<std::int64_t>(step) * (lie.isBottomUp ? -1 : 1);
    std::mt19937 random(seed);
    for (int y = 0; y < height; ++y) {
        for (std::size_t i = 0; i < rowBytes(); i += sizeof(float)) {
            const auto bits = static_cast<std::uint32_t>(random());
            const float number = static_cast<float>(bits % 1200) / 1000;
            std::memcpy(row(y) + i, lie.depth == VireoDepthFloat ? static_cast<const void*>(&number) : &bits,
                        std::min(sizeof number, rowBytes() - i));
        }
    }
}

PixelFormat Pixels::format() const {
    return {static_cast<PixelLayout>(frame.layout), static_cast<SampleDepth>(frame.depth),
            frame.premultiplied != 0};
}

std::size_t Pixels::rowBytes() const {
    return static_cast<std::size_t>(frame.width) *
           static_cast<std::size_t>(bytesOf(format().layout, format().depth));
}

bool Pixels::guardsHold() const {
    std::vector<std::uint8_t> guards = memory_;
    for (int y = 0; y < frame.height; ++y)
        std::fill_n(guards.begin() + (row(y) - memory_.data()), rowBytes(), guard_);
    return std::count(guards.begin(), guards.end(), guard_) == std::ssize(guards);
}

std::shared_ptr<Picture> Pixels::picture() const {
    const std::uint32_t code = frame.depth == VireoDepth16      ? formatBgra16
                               : frame.depth == VireoDepthFloat ? formatBgraFloat
                                                                : PixKit::formatBgra;
    auto picture = std::make_shared<Picture>(frame.width, frame.height, code);
    for (int y = 0; y < frame.height; ++y) rowToBgra(format(), row(y), picture->row(y), frame.width);
    return picture;
}

bool Pixels::holds(const Picture& picture) const {
    std::vector<std::uint8_t> expected(rowBytes());
    for (int y = 0; y < frame.height; ++y) {
        rowFromBgra(format(), picture.row(y), expected.data(), frame.width);
        if (std::memcmp(expected.data(), row(y), rowBytes()) != 0) return false;
    }
    return true;
}

std::vector<std::uint8_t> rowsOf(const VireoFrame& frame) {
    const auto rowBytes =
        static_cast<std::int64_t>(frame.width) *
        bytesOf(static_cast<PixelLayout>(frame.layout), static_cast<SampleDepth>(frame.depth));
    std::vector<std::uint8_t> rows;
    for (int y = 0; y < frame.height; ++y) {
        const auto* row = static_cast<const std::uint8_t*>(frame.pixels) + y * frame.stride;
        rows.insert(rows.end(), row, row + rowBytes);
    }
    return rows;
}

std::vector<std::uint8_t> rendered(const ChainHandle& chain, const VireoFrame& source, const VireoTime* time,
                                   const VireoRenderOptions* options) {
    VireoFrame result = source;
    result.pixels = nullptr;
    EXPECT_EQ(vireoChainRender(chain.get(), &source, &result, time, options), VireoDone) << sentence();
    auto rows = rowsOf(result);
    vireoFrameRelease(&result);
    return rows;
}

std::int32_t parameterOf(const ChainHandle& chain, const std::string& name, std::uint32_t position) {
    std::int32_t parameter = INT32_MIN;
    EXPECT_EQ(vireoChainFindParameter(chain.get(), position, name.c_str(), &parameter), VireoDone)
        << sentence();
    return parameter;
}

std::int64_t valueAt(const ChainHandle& chain, std::int32_t parameter, std::int64_t frame) {
    std::int64_t value = INT64_MIN;
    const VireoTime time = moment(frame);
    EXPECT_EQ(vireoChainValue(chain.get(), 0, parameter, &time, &value), VireoDone) << sentence();
    return value;
}

std::string settingsOf(const ChainHandle& chain) {
    return textFrom([&](char** text) { return vireoChainSettings(chain.get(), text); });
}

std::vector<std::uint8_t> bytesOf(const ChainHandle& chain, std::uint32_t position, std::int64_t frame) {
    void* bytes = nullptr;
    std::size_t length = 0;
    const VireoTime time = moment(frame);
    EXPECT_EQ(vireoChainBytes(chain.get(), position, &time, &bytes, &length), VireoDone) << sentence();
    const auto* first = static_cast<const std::uint8_t*>(bytes);
    std::vector<std::uint8_t> copy(first, first + length);
    vireoFree(bytes);
    return copy;
}

void setAllAtRandom(const ChainHandle& chain, std::uint32_t position, std::uint32_t seed) {
    std::mt19937 random(seed);
    std::uint32_t filter = 0;
    EXPECT_EQ(vireoChainFilter(chain.get(), position, &filter), VireoDone);
    VireoFilter about{.structSize = sizeof about};
    EXPECT_EQ(vireoDescribeFilter(engine(), filter, &about), VireoDone);
    for (std::uint32_t i = 0; i < about.parameterCount; ++i) {
        VireoParameter parameter{.structSize = sizeof parameter};
        EXPECT_EQ(vireoDescribeParameter(engine(), filter, i, &parameter), VireoDone);
        const double highest = parameter.kind == VireoColor     ? 0xFFFFFF
                               : parameter.kind == VireoBoolean ? 1
                                                                : parameter.maximum;
        std::uniform_int_distribution<std::int64_t> values(static_cast<std::int64_t>(parameter.minimum),
                                                           static_cast<std::int64_t>(highest));
        EXPECT_EQ(vireoChainSetValue(chain.get(), position, static_cast<std::int32_t>(i), values(random)),
                  VireoDone)
            << about.name << ", " << parameter.name << ": " << sentence();
    }
}

}  // namespace vireo::test
