// SPDX-License-Identifier: MIT
#include "app/chain/filter_chain.h"

#include "app/render/render_job.h"
#include "app/settings/names.h"

#include <algorithm>
#include <thread>

namespace vireo {
namespace {

struct CarriedFormat {
    std::uint32_t code;
    int depth;
};

/// The formats in which frames travel between decoder, chain and encoder.
constexpr CarriedFormat carriedFormats[] = {
    {PixKit::formatBgra, 8}, {PixKit::formatCode("Bgra"), 16}, {PixKit::formatCode("BGra"), 32}};

bool contains(const std::vector<std::uint32_t>& formats, std::uint32_t format) {
    return std::find(formats.begin(), formats.end(), format) != formats.end();
}

/// Progressive frames, and those with no rows for a second field.
bool isRenderedWhole(Interlacing interlacing, int height) {
    return interlacing == Interlacing::Progressive || height < 2;
}

}  // namespace

/// What one call of process() was given.
struct FilterChain::Clip {
    const PicturePtr& source;
    const FramePosition& position;
    const SourceHistory& history;

    PicturePtr frame(std::int64_t number) const {
        return number == position.number ? source : history.frame(number);
    }
};

FilterChain::FilterChain(std::vector<FilterSettings> filters, int threads,
                         std::optional<std::uint32_t> filterFormat) {
    if (threads <= 0) threads = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
    for (FilterSettings& settings : filters) {
        stages_.push_back(std::make_unique<FilterStage>(std::move(settings), threads));
        const int lookBack = stages_.back()->lookBack();
        const bool needsCache = lookBack > 0 && stages_.size() > 1;
        inputs_.push_back(
            needsCache ? std::make_unique<PictureCache>(static_cast<std::size_t>(lookBack + threads + 1))
                       : nullptr);
    }
    if (filterFormat) useFormat(*filterFormat);
}

void FilterChain::useFormat(std::uint32_t format) {
    const bool isVuya = format == PixKit::formatVuya;
    const bool isDeep = format != PixKit::formatBgra && !isVuya;
    if (isDeep && std::none_of(std::begin(carriedFormats), std::end(carriedFormats),
                               [format](const CarriedFormat& carried) { return carried.code == format; })) {
        throw RenderError("the filter format " + formatName(format) + " is none of bgra, vuya, Bgra and BGra",
                          2);
    }
    if (isDeep && stages_.size() > 1) {
        throw RenderError(
            "the filter format " + formatName(format) + " is for a filter alone, not for a chain", 2);
    }
    bool isOffered = format == PixKit::formatBgra;
    for (const auto& stage : stages_) {
        if (!contains(stage->pixelFormats(), format)) continue;
        isOffered = true;
        if (isVuya) stage->setFormat(format);
    }
    if (!isOffered) throw RenderError("no filter given here offers the format " + formatName(format), 2);
    if (!isVuya) deepFormat_ = format;
}

int FilterChain::lookBack() const {
    int frames = 0;
    for (const auto& stage : stages_) frames += stage->lookBack();
    return frames;
}

std::uint32_t FilterChain::sourceFormat(int sourceDepth) const {
    if (deepFormat_) return *deepFormat_;
    if (stages_.size() > 1) return PixKit::formatBgra;
    CarriedFormat nearest = carriedFormats[0];
    for (const CarriedFormat& format : carriedFormats) {
        if (nearest.depth < sourceDepth && contains(stages_.front()->pixelFormats(), format.code))
            nearest = format;
    }
    return nearest.code;
}

std::string FilterChain::refusal(int width, int height, std::uint32_t format, Interlacing interlacing) const {
    const int rows = isRenderedWhole(interlacing, height) ? height : upperFieldRows(height);
    for (const auto& stage : stages_) {
        std::string refusal = stage->refusal(width, rows, Picture::rowBytesOf(width, format));
        if (!refusal.empty()) return refusal;
    }
    return {};
}

PicturePtr FilterChain::process(const PicturePtr& source, const FramePosition& position,
                                const SourceHistory& history) {
    return wholeFrame(stages_.size(), position, Clip{source, position, history});
}

PicturePtr FilterChain::wholeFrame(std::size_t stages, const FramePosition& position, const Clip& clip) {
    if (isRenderedWhole(position.interlacing, clip.source->height())) {
        return output(stages, {position, Field::None}, clip);
    }
    const PicturePtr upper = output(stages, {position, Field::Upper}, clip);
    const PicturePtr lower = output(stages, {position, Field::Lower}, clip);
    return weaveFields(*upper, *lower);
}

/// What the first `stages` filters make of a frame or field.
PicturePtr FilterChain::output(std::size_t stages, const Moment& moment, const Clip& clip) {
    if (stages == 0) {
        const PicturePtr frame = clip.frame(moment.position.number);
        if (frame == nullptr) {
            throw std::runtime_error("frame " + std::to_string(moment.position.number) +
                                     " is no longer there for frame " + std::to_string(clip.position.number));
        }
        return moment.field == Field::None ? frame : extractField(*frame, moment.field);
    }
    const auto compute = [&] {
        return stages_[stages - 1]->apply(output(stages - 1, moment, clip), moment, [&](std::int64_t frame) {
            return earlierOutput(stages - 1, frame, moment, clip);
        });
    };
    if (stages == stages_.size() || inputs_[stages] == nullptr) return compute();
    return inputs_[stages]->get(moment.position.number, moment.field, compute);
}

PicturePtr FilterChain::earlierOutput(std::size_t stages, std::int64_t frame, const Moment& now,
                                      const Clip& clip) {
    FramePosition position = clip.history.position(frame);
    if (now.field == Field::None) return wholeFrame(stages, position, clip);
    position.interlacing = now.position.interlacing;
    return output(stages, {position, now.field}, clip);
}

std::string formatName(std::uint32_t code) {
    std::string name;
    for (int i = 0; i < 4; ++i) name += static_cast<char>(code >> (8 * i) & 0xFF);
    return name;
}

}  // namespace vireo
