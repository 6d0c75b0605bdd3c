// SPDX-License-Identifier: MIT
#include "engine/chain/filter_chain.h"

#include "engine/error.h"

#include <algorithm>
#include <span>

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

}  // namespace

FilterChain::FilterChain(std::vector<FilterSettings> filters, std::optional<std::uint32_t> filterFormat) {
    for (FilterSettings& settings : filters) {
        stages_.push_back(std::make_unique<FilterStage>(std::move(settings)));
    }
    if (filterFormat) useFormat(*filterFormat);
}

std::unique_ptr<ChainMemory> FilterChain::newMemory(int frames) const {
    auto memory = std::make_unique<ChainMemory>();
    for (const auto& stage : stages_) {
        const bool needsCache = stage->lookBack() > 0 && !memory->inputs_.empty();
        memory->inputs_.push_back(needsCache ? std::make_unique<PictureCache>(
                                                   static_cast<std::size_t>(stage->lookBack() + frames + 1))
                                             : nullptr);
    }
    return memory;
}

void FilterChain::useFormat(std::uint32_t format) {
    const bool isVuya = format == PixKit::formatVuya;
    const bool isDeep = format != PixKit::formatBgra && !isVuya;
    if (isDeep && std::none_of(std::begin(carriedFormats), std::end(carriedFormats),
                               [format](const CarriedFormat& carried) { return carried.code == format; })) {
        throw Error(Fault::Usage,
                    "the filter format " + formatName(format) + " is none of bgra, vuya, Bgra and BGra");
    }
    if (isDeep && stages_.size() > 1) {
        throw Error(Fault::Usage,
                    "the filter format " + formatName(format) + " is for a filter alone, not for a chain");
    }
    bool isOffered = format == PixKit::formatBgra;
    for (const auto& stage : stages_) {
        if (!contains(stage->pixelFormats(), format)) continue;
        isOffered = true;
        if (isVuya) stage->setFormat(format);
    }
    if (!isOffered) throw Error(Fault::Usage, "no filter given here offers the format " + formatName(format));
    if (!isVuya) deepFormat_ = format;
}

int FilterChain::lookBack() const {
    int frames = 0;
    for (const auto& stage : stages_) frames += stage->lookBack();
    return frames;
}

bool FilterChain::readsTime() const {
    return std::any_of(stages_.begin(), stages_.end(), [](const auto& stage) { return stage->readsTime(); });
}

bool FilterChain::takesRowsFromTheTop() const {
    return std::all_of(stages_.begin(), stages_.end(),
                       [](const auto& stage) { return stage->takesRowsFromTheTop(); });
}

bool FilterChain::touchesGaps() const {
    return std::any_of(stages_.begin(), stages_.end(),
                       [](const auto& stage) { return stage->touchesGaps(); });
}

bool FilterChain::isIdentity(const FramePosition& position) const {
    return std::all_of(stages_.begin(), stages_.end(),
                       [&](const auto& stage) { return stage->isIdentity(position); });
}

bool FilterChain::rendersInPlace(const Picture& source, const FramePosition& position) const {
    return source.format() == PixKit::formatBgra && isRenderedWhole(position.interlacing, source.height()) &&
           std::all_of(stages_.begin(), stages_.end(),
                       [](const auto& stage) { return stage->worksByRows(); });
}

bool FilterChain::takesFormat(std::uint32_t format) const {
    if (deepFormat_) return format == *deepFormat_;
    return format == PixKit::formatBgra ||
           (stages_.size() == 1 && contains(stages_.front()->pixelFormats(), format));
}

std::uint32_t FilterChain::sourceFormat(int sourceDepth) const {
    if (deepFormat_) return *deepFormat_;
    CarriedFormat nearest = carriedFormats[0];
    for (const CarriedFormat& format : carriedFormats) {
        if (nearest.depth < sourceDepth && takesFormat(format.code)) nearest = format;
    }
    return nearest.code;
}

std::string FilterChain::refusal(int width, int height, std::uint32_t format, Interlacing interlacing) const {
    const int rows = isRenderedWhole(interlacing, height) ? height : upperFieldRows(height);
    return refusal(width, rows, Picture::rowBytesOf(width, format));
}

std::string FilterChain::refusal(int width, int height, std::int64_t rowBytes) const {
    for (const auto& stage : stages_) {
        std::string refusal = stage->refusal(width, height, rowBytes);
        if (!refusal.empty()) return refusal;
    }
    return {};
}

PicturePtr FilterChain::render(const ChainFrame& frame) const {
    PicturePtr result = wholeFrame(stages_.size(), frame.position, frame);
    if (frame.target == nullptr || result == frame.target) return result;
    copyPicture(*result, *frame.target);
    return frame.target;
}

PicturePtr FilterChain::wholeFrame(std::size_t stages, const FramePosition& position,
                                   const ChainFrame& call) const {
    if (isRenderedWhole(position.interlacing, call.source->height())) {
        return output(stages, {position, Field::None}, call);
    }
    const PicturePtr upper = output(stages, {position, Field::Upper}, call);
    const PicturePtr lower = output(stages, {position, Field::Lower}, call);
    const bool isResult = stages == stages_.size();
    return weaveFields(*upper, *lower, isResult ? call.target : nullptr);
}

/// What the first `stages` filters make of a frame or field.
PicturePtr FilterChain::output(std::size_t stages, const Moment& moment, const ChainFrame& call) const {
    if (stages == 0) {
        const std::int64_t number = moment.position.number;
        const PicturePtr frame = number == call.position.number ? call.source : call.history.frame(number);
        if (frame == nullptr) {
            throw Error(Fault::NoFrame, "frame " + std::to_string(number) + " is no longer there for frame " +
                                            std::to_string(call.position.number));
        }
        return moment.field == Field::None ? frame : extractField(*frame, moment.field);
    }
    const auto target = stages == stages_.size() && moment.field == Field::None ? call.target : nullptr;
    const auto compute = [&] {
        // What works by rows goes together.
        std::size_t first = stages;
        while (first > 0 && stages_[first - 1]->worksByRows()) --first;
        if (stages - first > 1 || (target != nullptr && target == call.source)) {
            return FilterStage::applyByRows(std::span(stages_).subspan(first, stages - first),
                                            output(first, moment, call), moment, call.work, target);
        }
        return stages_[stages - 1]->apply(
            output(stages - 1, moment, call), moment,
            [&](std::int64_t frame) { return earlierOutput(stages - 1, frame, moment, call); }, call.work,
            target);
    };
    if (stages == stages_.size() || call.memory.inputs_[stages] == nullptr) return compute();
    return call.memory.inputs_[stages]->get(moment.position.number, moment.field, compute);
}

PicturePtr FilterChain::earlierOutput(std::size_t stages, std::int64_t frame, const Moment& now,
                                      const ChainFrame& call) const {
    FramePosition position = call.history.position(frame);
    if (now.field == Field::None) return wholeFrame(stages, position, call);
    position.interlacing = now.position.interlacing;
    return output(stages, {position, now.field}, call);
}

std::string formatName(std::uint32_t code) {
    std::string name;
    for (int i = 0; i < 4; ++i) name += static_cast<char>(code >> (8 * i) & 0xFF);
    return name;
}

}  // namespace vireo
