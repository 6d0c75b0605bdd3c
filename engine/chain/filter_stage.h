// SPDX-License-Identifier: MIT
#ifndef VIREO_ENGINE_CHAIN_FILTER_STAGE_H
#define VIREO_ENGINE_CHAIN_FILTER_STAGE_H

#include "engine/chain/fields.h"
#include "engine/chain/worker_pool.h"
#include "engine/settings/filter_settings.h"
#include "host/hosting/filter_instance.h"
#include "host/hosting/filter_traits.h"

#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <span>
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

/// How a frame's work is done.
struct StageWork {
    WorkerPool* workers = nullptr;           ///< Render bands of rows side by side; null: one thread.
    std::function<bool()> isCancelled = {};  ///< Asked between filters and bands; may be empty.
};

/// One filter of a chain, ready to render on several threads at once.
class FilterStage {
public:
    explicit FilterStage(FilterSettings settings);

    /// How many earlier frames the filter asks its host for.
    int lookBack() const { return traits_.earlierFrames; }

    /// Whether the result hangs on the frame's place in the clip.
    bool readsTime() const { return traits_.readsTime || settings_.isTimed(); }

    bool takesRowsFromTheTop() const { return traits_.takesRowsFromTheTop; }
    bool touchesGaps() const { return traits_.touchesGaps; }

    /// Whether the filter leaves a frame as it is: it does not work on it, or its settings say so.
    bool isIdentity(const FramePosition& position) const;

    /// The formats that the filter offers; empty where it takes "bgra" and says nothing.
    const std::vector<std::uint32_t>& pixelFormats() const { return pixelFormats_; }

    /// Makes the filter render "bgra" pictures in another format that it offers.
    void setFormat(std::uint32_t format) { format_ = format; }

    /// Why the filter does not take frames or fields of a size; empty where it does.
    std::string refusal(int width, int height, std::int64_t rowBytes) const;

    /// The filter's result over `input`, mixed as its settings say, in `target` where there is one of the
    /// input's shape; `input` itself where the filter does not work on this frame. Throws std::exception.
    PicturePtr apply(const PicturePtr& input, const Moment& moment, const InputAt& inputAt,
                     const StageWork& work, const std::shared_ptr<Picture>& target);

    /// Whether a row of the result hangs on that row of the input alone, in "bgra".
    bool worksByRows() const;

    /// What apply() of one stage after another makes, all of which work by rows: a few rows at a time go
    /// through all filters while they are in the processor's cache. `input` is "bgra"; it may be the target.
    static PicturePtr applyByRows(std::span<const std::unique_ptr<FilterStage>> stages,
                                  const PicturePtr& input, const Moment& moment, const StageWork& work,
                                  const std::shared_ptr<Picture>& target);

private:
    class Lease;
    class Calls;
    class Execution;
    class RowStep;

    /// 0 where the filter does not work on this frame.
    int mixAt(const Moment& moment) const;
    void refuseSize(const Picture& source) const;
    static void mergeTables(std::list<RowStep>& steps);

    FilterSettings settings_;
    const hosting::FilterTraits& traits_;
    std::vector<std::unique_ptr<hosting::FilterInstance>> instances_;  ///< One, unless animated.
    std::vector<hosting::FilterInstance*> idle_;
    std::mutex mutex_;
    std::vector<std::uint32_t> pixelFormats_;
    std::uint32_t format_ = PixKit::formatBgra;
};

}  // namespace vireo

#endif
