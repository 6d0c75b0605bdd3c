// SPDX-License-Identifier: MIT
#include "app/preview/frame_shelf.h"

#include "engine/error.h"

#include <utility>

namespace vireo {
namespace {

/// Only tells the reader what frames are wanted like.
class Unfiltered : public FrameProcessor {
public:
    int lookBack() const override { return 0; }
    std::uint32_t sourceFormat(int) const override { return PixKit::formatBgra; }
    PicturePtr process(PicturePtr source, const FramePosition&, const SourceHistory&) override {
        return source;
    }
};

}  // namespace

FrameShelf::FrameShelf(std::string input) : input_(std::move(input)) { open(0); }

FrameShelf::~FrameShelf() = default;

void FrameShelf::open(std::int64_t first) {
    RenderJob job;
    job.input = input_;
    job.noAudio = true;
    if (first > 0) job.frames = FrameRange{first, std::nullopt};
    media_ = {};
    media_ = openMedia(job, Unfiltered(), stop_, messages_);
    next_ = first;
}

std::int64_t FrameShelf::frameCount() const { return media_.reader->info().frameCount; }

double FrameShelf::frameRate() const { return media_.reader->info().frameRate; }

PicturePtr FrameShelf::frame(std::int64_t number) {
    if (number != next_) open(number);
    std::unique_ptr<SourceFrame> frame;
    do {
        frame = media_.reader->read();
        if (frame == nullptr) throw Error(input_ + " has no frame " + std::to_string(number));
    } while (frame->preRoll || frame->position.number < number);
    next_ = frame->position.number + 1;
    return frame->picture(PixKit::formatBgra);
}

}  // namespace vireo
