// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_RENDER_COMPARISON_H
#define VIREO_APP_RENDER_COMPARISON_H

#include "app/media/frame_processor.h"

#include <cstdint>
#include <optional>

namespace vireo {

/// How a frame and what a processor makes of it share a picture.
enum class Layout {
    After,   ///< The result alone.
    Beside,  ///< The source at the left, the result at the right of it.
    Below,   ///< The source above the result.
    Split,   ///< One picture, its left half the source's, its right half the result's.
};

/// Beside, or below where frames are at least twice as wide as high.
Layout fittingLayout(const FrameShape& source);

/// Shows the work of another processor. Between the two lies a thin line.
class Comparison : public FrameProcessor {
public:
    struct Options {
        std::optional<Layout> layout;  ///< Nothing: the one that fits the frames.
        bool keepAlpha = false;        ///< Else transparency is shown, as a checkerboard behind it.
    };

    /// The processor must outlive it.
    Comparison(FrameProcessor& processor, Options options) : processor_(processor), options_(options) {}

    void begin(int threads) override { processor_.begin(threads); }
    int lookBack() const override { return processor_.lookBack(); }
    std::uint32_t sourceFormat(int sourceDepth) const override {
        return processor_.sourceFormat(sourceDepth);
    }
    std::string refusal(int width, int height, std::uint32_t format, Interlacing interlacing) const override {
        return processor_.refusal(width, height, format, interlacing);
    }
    FrameShape outputShape(const FrameShape& source) const override;
    PicturePtr process(PicturePtr source, const FramePosition& position,
                       const SourceHistory& history) override;

private:
    FrameProcessor& processor_;
    Options options_;
};

}  // namespace vireo

#endif
