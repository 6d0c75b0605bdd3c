// SPDX-License-Identifier: MIT
// Small filters with a host's view of them, for tests of what happens around filters.
#ifndef VIREO_TESTS_ENGINE_SUPPORT_FAKE_FILTERS_H
#define VIREO_TESTS_ENGINE_SUPPORT_FAKE_FILTERS_H

#include "engine/chain/clip.h"
#include "host/hosting/meta_plugin.h"

#include <algorithm>
#include <vector>

namespace vireo::test {

/// 1 "Add Value": adds its Amount (-100 to 100, 2 bytes, 5 at first) to blue.
/// 2 "Add Stamp": writes its time into blue, field flags / 256 into green and the duration into red.
/// 3 "Echo": blue becomes 10 times its own less the blue of the picture four fields earlier, in fields eight;
///   before the clip's begin that of its first frame.
/// 4 "Deep Copy (16)": copies; offers "Bgra" and "vuya" beside "bgra". It goes by the match name of a filter
///   that is known; the others are not.
const std::vector<hosting::Filter>& fakeFilters();

/// A picture whose bytes are all the same.
std::shared_ptr<Picture> plainPicture(int width, int height, int value);

/// A clip whose frames are in memory.
class Clip : public SourceHistory {
public:
    Clip(std::vector<PicturePtr> frames, Interlacing interlacing = Interlacing::Progressive)
        : frames_(std::move(frames)), interlacing_(interlacing) {}

    PicturePtr frame(std::int64_t number) const override {
        return frames_.at(static_cast<std::size_t>(std::max<std::int64_t>(number, 0)));
    }
    FramePosition position(std::int64_t number) const override {
        return {number, std::ssize(frames_), static_cast<double>(number) / 25, 25, interlacing_};
    }

private:
    std::vector<PicturePtr> frames_;
    Interlacing interlacing_;
};

}  // namespace vireo::test

#endif
