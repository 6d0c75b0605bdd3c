// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_OUTPUT_GROUP_H
#define VIREO_APP_MEDIA_OUTPUT_GROUP_H

#include "app/media/media.h"

#include <vector>

namespace vireo {

/// Several outputs of the same frames, which appear together or not at all.
class OutputGroup : public MediaWriter {
public:
    explicit OutputGroup(std::vector<std::unique_ptr<MediaWriter>> writers) : writers_(std::move(writers)) {}

    std::unique_ptr<OutputFrame> convert(const Picture& picture, const SourceFrame& source) override {
        auto frames = std::make_unique<Frames>();
        for (const auto& writer : writers_) frames->each.push_back(writer->convert(picture, source));
        return frames;
    }

    void write(std::unique_ptr<OutputFrame> frame) override {
        auto& frames = static_cast<Frames&>(*frame);
        for (std::size_t i = 0; i < writers_.size(); ++i) writers_[i]->write(std::move(frames.each[i]));
    }

    void finish() override {
        for (const auto& writer : writers_) writer->finish();
    }

    void appear() override {
        for (const auto& writer : writers_) writer->appear();
    }

    std::int64_t bytes() const override {
        std::int64_t sum = 0;
        for (const auto& writer : writers_) sum += writer->bytes();
        return sum;
    }

private:
    struct Frames : OutputFrame {
        std::vector<std::unique_ptr<OutputFrame>> each;
    };

    std::vector<std::unique_ptr<MediaWriter>> writers_;
};

}  // namespace vireo

#endif
