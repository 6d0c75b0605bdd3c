// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_RENDER_MEASURING_H
#define VIREO_APP_RENDER_MEASURING_H

#include "app/media/frame_processor.h"

#include <array>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <span>
#include <string>

namespace vireo {

/// How far a picture lies from another one.
struct PictureDistance {
    /// Mean squared differences of red, green, blue and alpha, where a whole channel is 1.
    std::array<double, 4> squared{};
    std::optional<double> similarity;  ///< SSIM of luma; nothing for pictures smaller than its window.
};

/// Both pictures have the same size and format.
///
/// SSIM is that of Wang, Bovik, Sheikh and Simoncelli, "Image quality assessment: from error visibility to
/// structural similarity", IEEE Transactions on Image Processing 13 (2004): a Gaussian window of 11 x 11 with
/// a standard deviation of 1.5, K1 = 0.01 and K2 = 0.03, the mean over all windows that lie in the picture.
/// Luma is 0.299 R + 0.587 G + 0.114 B.
PictureDistance distanceOf(const Picture& one, const Picture& other);

/// The distance of all pictures together: means over them.
PictureDistance meanOf(std::span<const PictureDistance> distances);

/// In decibels, of mean squared differences; infinite where there are none.
double peakSignalToNoise(double squared);

/// Measures what another processor makes of frames.
class Measuring : public FrameProcessor {
public:
    /// The processor must outlive it.
    explicit Measuring(FrameProcessor& processor) : processor_(processor) {}

    /// By the frames' numbers.
    const std::map<std::int64_t, PictureDistance>& distances() const { return distances_; }

    void begin(int threads) override { processor_.begin(threads); }
    int lookBack() const override { return processor_.lookBack(); }
    std::uint32_t sourceFormat(int sourceDepth) const override {
        return processor_.sourceFormat(sourceDepth);
    }
    std::string refusal(int width, int height, std::uint32_t format, Interlacing interlacing) const override {
        return processor_.refusal(width, height, format, interlacing);
    }
    PicturePtr process(PicturePtr source, const FramePosition& position,
                       const SourceHistory& history) override;

private:
    FrameProcessor& processor_;
    std::mutex mutex_;
    std::map<std::int64_t, PictureDistance> distances_;
};

}  // namespace vireo

#endif
