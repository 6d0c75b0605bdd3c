// SPDX-License-Identifier: MIT
// The C interface as a user has it, and the engine's own chain beside it.
#ifndef VIREO_TESTS_ENGINE_INTERFACE_INTERFACE_SUPPORT_H
#define VIREO_TESTS_ENGINE_INTERFACE_INTERFACE_SUPPORT_H

#include "engine/chain/filter_chain.h"
#include "engine/pixels/pixel_layout.h"

#include <gmock/gmock.h>
#include <vireo/vireo.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

namespace vireo::test {

/// One engine for the whole program.
VireoEngine* engine();

using ChainHandle = std::unique_ptr<VireoChain, void (*)(VireoChain*)>;
using StreamHandle = std::unique_ptr<VireoStream, void (*)(VireoStream*)>;
ChainHandle newChain(const std::string& text = "");
ChainHandle copyOf(const ChainHandle& chain);
StreamHandle newStream(const ChainHandle& chain);

/// The sentence of the last failure.
std::string sentence();

/// What a call hands out to keep, as a value: `call` takes where to put it.
template <class Call>
std::string textFrom(Call&& call) {
    char* text = nullptr;
    EXPECT_EQ(call(&text), VireoDone) << sentence();
    const std::string copy(text == nullptr ? "" : text);
    vireoFree(text);
    return copy;
}
std::string textOf(const ChainHandle& chain, VireoSpelling spelling = VireoSpellingFull);

std::string settingsOf(const ChainHandle& chain);

/// A parameter by its name, its value at a frame of a clip of 25 a second, and the settings handle then.
std::int32_t parameterOf(const ChainHandle& chain, const std::string& name, std::uint32_t position = 0);
std::int64_t valueAt(const ChainHandle& chain, std::int32_t parameter, std::int64_t frame);
std::vector<std::uint8_t> bytesOf(const ChainHandle& chain, std::uint32_t position = 0,
                                  std::int64_t frame = 0);

/// The same chain in C++.
FilterChain engineChain(const std::string& text);

/// A moment at 25 frames a second.
VireoTime moment(std::int64_t frame, std::int64_t frames = 0, int interlacing = 0);

/// How a frame lies in memory.
struct Lie {
    VireoLayout layout = VireoBgra;
    VireoDepth depth = VireoDepth8;
    bool premultiplied = false;
    bool isBottomUp = false;
    int gap = 0;  ///< Bytes between rows.
};
std::ostream& operator<<(std::ostream& out, const Lie& lie);

/// A frame with bytes around and between its rows that nobody may touch.
class Pixels {
public:
    Pixels(int width, int height, const Lie& lie, std::uint32_t seed);

    VireoFrame frame;

    bool guardsHold() const;

    /// As filters see it.
    std::shared_ptr<Picture> picture() const;

    /// Whether the rows are those of a picture that was converted to this frame's layout.
    bool holds(const Picture& picture) const;

private:
    std::uint8_t* row(int y) const { return static_cast<std::uint8_t*>(frame.pixels) + y * frame.stride; }
    std::size_t rowBytes() const;
    PixelFormat format() const;

    std::uint8_t guard_;  ///< Another for another seed, so that nobody copies it unseen.
    std::vector<std::uint8_t> memory_;
};

/// The rows of a frame as bytes without gaps.
std::vector<std::uint8_t> rowsOf(const VireoFrame& frame);

/// The rows that a chain makes of a frame, in its own layout.
std::vector<std::uint8_t> rendered(const ChainHandle& chain, const VireoFrame& source,
                                   const VireoTime* time = nullptr,
                                   const VireoRenderOptions* options = nullptr);

/// Sets every parameter to a number from its range, another for another seed.
void setAllAtRandom(const ChainHandle& chain, std::uint32_t position, std::uint32_t seed);

}  // namespace vireo::test

#endif
