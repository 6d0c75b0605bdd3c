// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_RENDER_CHAIN_PROCESSOR_H
#define VIREO_APP_RENDER_CHAIN_PROCESSOR_H

#include "app/media/frame_processor.h"
#include "engine/chain/filter_chain.h"
#include "engine/chain/worker_pool.h"

#include <memory>

namespace vireo {

/// A chain of filters between decoder and encoder.
class ChainProcessor : public FrameProcessor {
public:
    /// The chain of FilterChain's constructor. `frames` may be rendered side by side.
    ChainProcessor(std::vector<FilterSettings> filters, int frames, std::optional<std::uint32_t> filterFormat)
        : chain_(std::move(filters), filterFormat), frames_(frames), memory_(chain_.newMemory(frames_)) {}

    void begin(int threads) override {
        memory_ = chain_.newMemory(frames_);
        workers_ = std::make_unique<WorkerPool>(threads);
    }
    int lookBack() const override { return chain_.lookBack(); }
    std::uint32_t sourceFormat(int sourceDepth) const override { return chain_.sourceFormat(sourceDepth); }
    std::string refusal(int width, int height, std::uint32_t format, Interlacing interlacing) const override {
        return chain_.refusal(width, height, format, interlacing);
    }
    PicturePtr process(PicturePtr source, const FramePosition& position,
                       const SourceHistory& history) override {
        const auto target = chain_.rendersInPlace(*source, position) ? overwritable(source) : nullptr;
        return chain_.render({source, position, history, *memory_, {workers_.get(), {}}, target});
    }

private:
    FilterChain chain_;
    int frames_;
    std::unique_ptr<ChainMemory> memory_;
    std::unique_ptr<WorkerPool> workers_;
};

}  // namespace vireo

#endif
