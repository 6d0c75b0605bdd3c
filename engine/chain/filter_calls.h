// SPDX-License-Identifier: MIT
// How a stage calls its filter. For the stages' own sources.
#ifndef VIREO_ENGINE_CHAIN_FILTER_CALLS_H
#define VIREO_ENGINE_CHAIN_FILTER_CALLS_H

#include "engine/chain/filter_stage.h"
#include "engine/error.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace vireo {

/// Rows of a frame, counted in memory: the bottom of the picture first.
struct Rows {
    int first;
    int count;

    int end() const { return first + count; }
};

inline void throwIfCancelled(const StageWork& work) {
    if (work.isCancelled && work.isCancelled()) throw Error(Fault::Cancelled, "rendering was cancelled");
}

inline std::shared_ptr<Picture> pictureLike(const Picture& other) {
    return std::make_shared<Picture>(other.width(), other.height(), other.format(), other.rowBytes());
}

inline FrameBuffer rowsOf(const FrameBuffer& frame, const Rows& rows) {
    FrameBuffer part = frame;
    part.bounds.bottom = part.bounds.top + rows.count;
    part.pixels = static_cast<std::uint8_t*>(frame.pixels.get()) + std::int64_t{rows.first} * frame.rowBytes;
    return part;
}

/// An instance whose settings are those of a frame. Where they change along the clip no other thread has it.
class FilterStage::Lease {
public:
    Lease(FilterStage& stage, const FramePosition& position);
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;
    ~Lease();

    const hosting::FilterInstance& operator*() const { return *instance_; }

private:
    FilterStage& stage_;
    hosting::FilterInstance* instance_ = nullptr;
};

/// Calls of a stage's filter for one frame or field, of which several threads may make some at once.
class FilterStage::Calls {
public:
    Calls(FilterStage& stage, std::uint32_t format, const Moment& moment, const InputAt& inputAt);

    /// Renders between two buffers that hold these rows of the frame. Throws std::exception.
    void render(FrameBuffer* source, FrameBuffer* destination, const Rows& rows);

private:
    struct FrameSource;

    static std::int32_t getFrame(std::uint32_t time, FrameBuffer* target, const FrameRect* bounds,
                                 void* data);
    PicturePtr earlier(std::int64_t number);

    FilterStage& stage_;
    const std::optional<std::int32_t> filledRows_;
    const Moment& moment_;
    const InputAt& inputAt_;
    const Lease instance_;
    std::mutex mutex_;
    std::vector<std::pair<std::int64_t, PicturePtr>> earlier_;
};

}  // namespace vireo

#endif
