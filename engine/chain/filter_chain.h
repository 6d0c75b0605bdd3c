// SPDX-License-Identifier: MIT
#ifndef VIREO_ENGINE_CHAIN_FILTER_CHAIN_H
#define VIREO_ENGINE_CHAIN_FILTER_CHAIN_H

#include "engine/chain/clip.h"
#include "engine/chain/filter_stage.h"
#include "engine/chain/picture_cache.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vireo {

/// What filters that look back were given lately in one clip, so that frames behind one another do not
/// compute it again. Any thread may use it.
class ChainMemory {
private:
    friend class FilterChain;
    std::vector<std::unique_ptr<PictureCache>>
        inputs_;  ///< Of stages behind others that look back, else null.
};

/// One frame to be rendered.
struct ChainFrame {
    const PicturePtr& source;
    const FramePosition& position;
    const SourceHistory& history;
    ChainMemory& memory;  ///< Of the clip.
    StageWork work = {};
    /// Takes the result; its rows lie as the source's do. It may be the source where rendersInPlace() says
    /// so.
    std::shared_ptr<Picture> target = nullptr;
};

/// Filters one after another. Interlaced frames are rendered as their two fields. A filter that looks back
/// gets earlier frames as the filters before it make them. render() may run on several threads at once.
class FilterChain {
public:
    /// `filterFormat` makes filters render in another format where they offer it. Throws Error where they do
    /// not.
    explicit FilterChain(std::vector<FilterSettings> filters,
                         std::optional<std::uint32_t> filterFormat = std::nullopt);

    /// The memory of a clip of which up to `frames` frames are rendered side by side.
    std::unique_ptr<ChainMemory> newMemory(int frames) const;

    /// How many earlier source frames render() may ask for.
    int lookBack() const;

    /// Whether a frame's picture hangs on its place in the clip.
    bool readsTime() const;

    /// Whether every filter takes rows that lie from the top down as well.
    bool takesRowsFromTheTop() const;

    /// Whether a filter reads and writes what lies between rows.
    bool touchesGaps() const;

    /// Whether the chain leaves a frame as it is, as its settings tell.
    bool isIdentity(const FramePosition& position) const;

    /// Whether the result of a frame may be written over its source.
    bool rendersInPlace(const Picture& source, const FramePosition& position) const;

    /// The formats that source frames may have: "bgra", and deeper ones for a single filter that offers them.
    bool takesFormat(std::uint32_t format) const;

    /// The one of them that is nearest to a source of so many bits per channel, 32 for float.
    std::uint32_t sourceFormat(int sourceDepth) const;

    /// Why frames of a size and format cannot be rendered: a sentence without full stop; empty where they
    /// can.
    std::string refusal(int width, int height, std::uint32_t format, Interlacing interlacing) const;

    /// The same for rows that lie so many bytes from one another.
    std::string refusal(int width, int height, std::int64_t rowBytes) const;

    /// The result, in the source's format: `frame.target` where there is one, else a picture of its own or
    /// the source itself where no filter works on the frame. Throws std::exception.
    PicturePtr render(const ChainFrame& frame) const;

private:
    void useFormat(std::uint32_t format);
    PicturePtr wholeFrame(std::size_t stages, const FramePosition& position, const ChainFrame& call) const;
    PicturePtr output(std::size_t stages, const Moment& moment, const ChainFrame& call) const;
    PicturePtr earlierOutput(std::size_t stages, std::int64_t frame, const Moment& now,
                             const ChainFrame& call) const;

    std::vector<std::unique_ptr<FilterStage>> stages_;
    std::optional<std::uint32_t> deepFormat_;  ///< A deeper format that was asked for.
};

/// The name of a format as its code reads: "bgra".
std::string formatName(std::uint32_t code);

}  // namespace vireo

#endif
