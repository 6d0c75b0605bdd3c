// SPDX-License-Identifier: MIT
#include "tests/engine/interface/interface_support.h"

#include "engine/locations.h"

#include <cstring>
#include <ostream>

namespace vireo::test {
namespace {

constexpr std::uint8_t guard = 0xA5;
constexpr std::size_t guardBytes = 64;

template <class Sample>
void fillWithFloats(std::vector<std::uint8_t>& memory, Sample&& sample) {
    for (std::size_t i = 0; i + sizeof(float) <= memory.size(); i += sizeof(float)) {
        const float value = sample();
        std::memcpy(memory.data() + i, &value, sizeof value);
    }
}

}  // namespace

VireoEngine* engine() {
    static const std::unique_ptr<VireoEngine, void (*)(VireoEngine*)> opened(
        [] {
            VireoEngine* made = nullptr;
            EXPECT_EQ(vireoOpen(nullptr, &made), VireoDone) << sentence();
            return made;
        }(),
        vireoClose);
    return opened.get();
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

FramePosition positionOf(const VireoTime& time) {
    return {time.frame, time.frames, static_cast<double>(time.frame) / time.rate, time.rate,
            static_cast<Interlacing>(time.interlacing)};
}

std::ostream& operator<<(std::ostream& out, const Lie& lie) {
    return out << "layout " << lie.layout << ", depth " << lie.depth
               << (lie.premultiplied ? ", premultiplied" : "") << (lie.isBottomUp ? ", bottom-up" : "")
               << ", gap " << lie.gap;
}

Pixels::Pixels(int width, int height, const Lie& lie, std::uint32_t seed) : frame{} {
    frame.structSize = sizeof frame;
    frame.width = width;
    frame.height = height;
    frame.layout = lie.layout;
    frame.depth = lie.depth;
    frame.premultiplied = lie.premultiplied ? 1 : 0;
    const std::size_t step = rowBytes() + static_cast<std::size_t>(lie.gap);
    const auto rows = static_cast<std::size_t>(height);
    memory_.resize(step * rows + 2 * guardBytes);
    std::mt19937 random(seed);
    if (lie.depth == VireoDepthFloat) {
        fillWithFloats(memory_, [&] { return static_cast<float>(random() % 1200) / 1000; });
    } else {
        for (std::uint8_t& byte : memory_) byte = static_cast<std::uint8_t>(random() >> 8);
    }
    std::uint8_t* const first = memory_.data() + guardBytes;
    for (std::size_t i = 0; i < memory_.size(); ++i) {
        if (i < guardBytes || (i - guardBytes) % step >= rowBytes() || i - guardBytes >= step * rows)
            memory_[i] = guard;
    }
    frame.pixels = lie.isBottomUp ? first + step * (rows - 1) : first;
    frame.stride = static_cast<std::int64_t>(step) * (lie.isBottomUp ? -1 : 1);
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
    const auto step = static_cast<std::size_t>(std::abs(frame.stride));
    for (std::size_t i = 0; i < memory_.size(); ++i) {
        const bool isGuard = i < guardBytes || (i - guardBytes) % step >= rowBytes() ||
                             i - guardBytes >= step * static_cast<std::size_t>(frame.height);
        if (isGuard && memory_[i] != guard) return false;
    }
    return true;
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
