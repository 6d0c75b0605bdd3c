// SPDX-License-Identifier: MIT
// Where the samples of a pixel format lie, and rows of them as plain arrays.
#ifndef VIREO_APP_MEDIA_SAMPLE_LAYOUT_H
#define VIREO_APP_MEDIA_SAMPLE_LAYOUT_H

#include "app/media/ffmpeg_objects.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <vector>

namespace vireo {

enum class SampleKind { Bytes, Words, Floats, Other };

/// Formats whose samples all have one depth and begin at whole bytes, which is all but a few.
inline SampleKind sampleKind(const AVPixFmtDescriptor& format) {
    constexpr std::uint64_t unusual =
        AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BITSTREAM | AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BAYER;
    if ((format.flags & unusual) != 0 || format.log2_chroma_w > 2 || format.log2_chroma_h > 2)
        return SampleKind::Other;
    const int depth = format.comp[0].depth;
    for (int i = 1; i < format.nb_components; ++i) {
        if (format.comp[i].depth != depth || format.comp[i].shift != format.comp[0].shift)
            return SampleKind::Other;
    }
    if ((format.flags & AV_PIX_FMT_FLAG_FLOAT) != 0)
        return depth == 32 && std::strstr(format.name, "be") == nullptr ? SampleKind::Floats
                                                                        : SampleKind::Other;
    if (depth == 8 && format.comp[0].shift == 0) return SampleKind::Bytes;
    // Words are read whole: a format that packs samples closer than that is another kind.
    for (int i = 0; i < format.nb_components; ++i) {
        if (format.comp[i].step < 2 || format.comp[i].offset % 2 != 0) return SampleKind::Other;
    }
    return depth > 8 && depth + format.comp[0].shift <= 16 ? SampleKind::Words : SampleKind::Other;
}

/// Rows of one component of a frame. Samples that do not lie side by side in this machine's byte order are
/// brought so in a buffer, which the next call overwrites.
template <class Sample>
class ComponentRows {
public:
    ComponentRows(const AVFrame& frame, const AVPixFmtDescriptor& format, int component, int width)
        : base_(frame.data[format.comp[component].plane] + format.comp[component].offset),
          stride_(frame.linesize[format.comp[component].plane]),
          step_(format.comp[component].step),
          swap_(sizeof(Sample) == 2 && (format.flags & AV_PIX_FMT_FLAG_BE) != 0),
          buffer_(step_ != sizeof(Sample) || swap_ ? static_cast<std::size_t>(width) : 0) {}

    const Sample* row(int y) {
        const std::uint8_t* const from = base_ + std::ptrdiff_t{y} * stride_;
        if (buffer_.empty()) return reinterpret_cast<const Sample*>(from);
        for (std::size_t x = 0; x < buffer_.size(); ++x) {
            Sample sample;
            std::memcpy(&sample, from + static_cast<std::ptrdiff_t>(x) * step_, sizeof sample);
            if constexpr (sizeof(Sample) == 2) {
                if (swap_) sample = static_cast<Sample>(sample << 8 | sample >> 8);
            }
            buffer_[x] = sample;
        }
        return buffer_.data();
    }

private:
    const std::uint8_t* base_;
    std::ptrdiff_t stride_;
    int step_;
    bool swap_;
    std::vector<Sample> buffer_;
};

}  // namespace vireo

#endif
