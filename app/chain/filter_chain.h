// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_CHAIN_FILTER_CHAIN_H
#define VIREO_APP_CHAIN_FILTER_CHAIN_H

#include "app/chain/filter_stage.h"
#include "app/chain/picture_cache.h"
#include "app/render/frame_processor.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace vireo {

/// Filters one after another. Interlaced frames are rendered as their two fields. A filter that looks back
/// gets earlier frames as the filters before it make them.
class FilterChain : public FrameProcessor {
public:
    /// At least one filter. `threads` is how many frames may be rendered side by side, 0 for the machine's
    /// cores; more only wait. `filterFormat` makes filters render in another format where they offer it.
    /// Throws RenderError of wrong usage when it cannot.
    FilterChain(std::vector<FilterSettings> filters, int threads, std::optional<std::uint32_t> filterFormat);

    int lookBack() const override;
    std::uint32_t sourceFormat(int sourceDepth) const override;
    std::string refusal(int width, int height, std::uint32_t format, Interlacing interlacing) const override;
    PicturePtr process(const PicturePtr& source, const FramePosition& position,
                       const SourceHistory& history) override;

private:
    struct Clip;

    void useFormat(std::uint32_t format);
    PicturePtr wholeFrame(std::size_t stages, const FramePosition& position, const Clip& clip);
    PicturePtr output(std::size_t stages, const Moment& moment, const Clip& clip);
    PicturePtr earlierOutput(std::size_t stages, std::int64_t frame, const Moment& now, const Clip& clip);

    std::vector<std::unique_ptr<FilterStage>> stages_;
    std::vector<std::unique_ptr<PictureCache>>
        inputs_;                               ///< Of stages behind others that look back, else null.
    std::optional<std::uint32_t> deepFormat_;  ///< A deeper format that was asked for.
};

/// The name of a format as its code reads: "bgra".
std::string formatName(std::uint32_t code);

}  // namespace vireo

#endif
