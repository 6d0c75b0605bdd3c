// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_CHAIN_FILTER_STAGE_H
#define VIREO_APP_CHAIN_FILTER_STAGE_H

#include "app/chain/fields.h"
#include "app/settings/filter_settings.h"
#include "host/vrm/filter_instance.h"
#include "host/vrm/filter_traits.h"

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace vireo {

/// A frame of the clip, or one of its two fields.
struct Moment {
    FramePosition position;
    Field field = Field::None;

    /// In the host's clock: fields, two to a frame.
    std::uint32_t time() const;
};

/// The input of a filter at another frame, in the same field.
using InputAt = std::function<PicturePtr(std::int64_t frame)>;

/// One filter of a chain, ready to render on several threads at once.
class FilterStage {
public:
    /// Makes the filter's instances, `threads` of them where settings change along the clip.
    FilterStage(FilterSettings settings, int threads);

    /// How many earlier frames the filter asks its host for.
    int lookBack() const { return traits_.earlierFrames; }

    /// The formats that the filter offers; empty where it takes "bgra" and says nothing.
    const std::vector<std::uint32_t>& pixelFormats() const { return pixelFormats_; }

    /// Makes the filter render "bgra" pictures in another format that it offers.
    void setFormat(std::uint32_t format) { format_ = format; }

    /// Why the filter does not take frames or fields of a size; empty where it does.
    std::string refusal(int width, int height, std::int64_t rowBytes) const;

    /// The filter's result over `input`, mixed as its settings say; `input` itself where the filter does not
    /// work on this frame. Throws std::exception.
    PicturePtr apply(const PicturePtr& input, const Moment& moment, const InputAt& inputAt);

private:
    class Lease;

    void execute(const Picture& source, Picture& destination, const Moment& moment, const InputAt& inputAt);

    FilterSettings settings_;
    std::vector<std::unique_ptr<VRM::FilterInstance>> instances_;  ///< One, unless animated.
    std::vector<VRM::FilterInstance*> idle_;
    std::mutex mutex_;
    std::condition_variable returned_;
    std::vector<std::uint32_t> pixelFormats_;
    std::uint32_t format_ = PixKit::formatBgra;
    const VRM::FilterTraits& traits_;
};

}  // namespace vireo

#endif
