// SPDX-License-Identifier: MIT
// The C interface: frames through chains.
#include "engine/interface/frames.h"
#include "engine/interface/handles.h"

#include <atomic>
#include <deque>
#include <limits>
#include <map>
#include <optional>
#include <utility>

using namespace vireo;

namespace {

/// A chain's input at earlier frames, as the caller hands it over.
class CallerHistory : public SourceHistory {
public:
    CallerHistory(const FrameView& shape, const PicturePtr& source, const FramePosition& now,
                  const VireoRenderOptions& options)
        : shape_(shape), source_(source), now_(now), options_(options) {}

    PicturePtr frame(std::int64_t number) const override { return at(number).picture; }
    FramePosition position(std::int64_t number) const override { return at(number).position; }

private:
    struct Earlier {
        PicturePtr picture;
        FramePosition position;
    };

    const Earlier& at(std::int64_t wanted) const {
        const std::int64_t number = std::max<std::int64_t>(wanted, 0);
        const auto known = frames_.find(number);
        if (known != frames_.end()) return known->second;

        Earlier earlier{source_, now_};
        earlier.position.number = number;
        earlier.position.seconds = static_cast<double>(number) / now_.frameRate;
        if (options_.earlierFrame != nullptr) {
            VireoTime time{sizeof(VireoTime),
                           static_cast<std::int32_t>(now_.interlacing),
                           number,
                           now_.clipLength,
                           now_.frameRate,
                           earlier.position.seconds};
            earlier.picture = shape_.fetched([&](const VireoFrame& target) {
                if (options_.earlierFrame(options_.user, number, &target, &time) == 0) return;
                throw Error(Fault::NoFrame, "frame " + std::to_string(number) + " is not there");
            });
            earlier.position.seconds = positionOf(&time).seconds;
        }
        return frames_.emplace(number, std::move(earlier)).first->second;
    }

    const FrameView& shape_;
    const PicturePtr& source_;
    const FramePosition& now_;
    const VireoRenderOptions& options_;
    mutable std::map<std::int64_t, Earlier> frames_;
};

/// The frames that a stream keeps, the newest last.
class StreamHistory : public SourceHistory {
public:
    struct Kept {
        PicturePtr picture;
        FramePosition position;
    };
    std::deque<Kept> frames;

    PicturePtr frame(std::int64_t number) const override { return nearest(number).picture; }
    FramePosition position(std::int64_t number) const override { return nearest(number).position; }

private:
    const Kept& nearest(std::int64_t number) const {
        const auto kept = std::find_if(frames.rbegin(), frames.rend(), [number](const Kept& candidate) {
            return candidate.position.number <= number;
        });
        return kept == frames.rend() ? frames.front() : *kept;
    }
};

/// Throws Error where the chain does not render such frames.
void checkAccepted(const FilterChain& chain, const FrameView& frame, Interlacing interlacing) {
    const std::uint32_t format = frame.filterFormat();
    if (!chain.takesFormat(format)) {
        throw Error(Fault::Unsupported, "no filter given here offers the format " + formatName(format));
    }
    const std::string refused = chain.refusal(frame.width(), frame.height(), format, interlacing);
    if (!refused.empty()) throw Error(Fault::TooLarge, refused);
}

/// The caller's frames of one call.
class Call {
public:
    /// Throws Error.
    Call(const VireoFrame* given, VireoFrame* result, const VireoTime* time, bool isReduced = false)
        : source(read(given), true, isReduced), position(positionOf(time)), result_(result, source) {}

    const FrameView source;
    const FramePosition position;

    /// The source as filters take it: the caller's own pixels where they can be. `isKept`: beyond the call.
    PicturePtr sourcePicture(const FilterChain& chain, bool isKept) const {
        if (!isKept && serves(source, chain)) return source.picture();
        // With rows as the result has them the last filter can write there.
        const std::int64_t rowBytes = isWhole() && serves(result_.view(), chain)
                                          ? -result_.view().stride()
                                          : Picture::rowBytesOf(source.width(), source.filterFormat());
        const auto copy =
            std::make_shared<Picture>(source.width(), source.height(), source.filterFormat(), rowBytes);
        source.copyTo(*copy);
        return copy;
    }

    /// Renders a source picture and fills the caller's result.
    void render(const BuiltChain& built, const PicturePtr& picture, const SourceHistory& history,
                ChainMemory& memory, const VireoRenderOptions& options) {
        StageWork work{built.workers.get(), {}};
        if (options.isCancelled != nullptr) {
            // Once said, it counts for the parts that were left out, whatever the caller says later.
            work.isCancelled = [this, &options] {
                if (!isCancelled_ && options.isCancelled(options.user) != 0) isCancelled_ = true;
                return isCancelled_.load();
            };
        }
        const FrameView& result = result_.view();
        const bool isAlike = !isWhole() || picture->rowBytes() == -result.stride();
        const bool isDirect =
            isAlike && keepsToRows(result, built.chain) && result.isPlainBgra() && !source.overlaps(result);
        const bool isOverSource = !picture->ownsMemory() && result.isAt(source);
        std::shared_ptr<Picture> target;
        if (isDirect) {
            target = result.picture();
        } else if (built.chain.rendersInPlace(*picture, position)) {
            target = isOverSource ? std::const_pointer_cast<Picture>(picture) : overwritable(picture);
        }
        PicturePtr rendered = built.chain.render({picture, position, history, memory, work, target});
        const bool isThere = isDirect || (isOverSource && rendered == picture);
        // A chain that left the source alone hands it back: rows that are still to be read must stay.
        if (!isThere && rendered == picture && !picture->ownsMemory() && source.overlaps(result))
            rendered = copied(*rendered);
        if (!isThere) result.copyFrom(*rendered);
        result_.handOver();
    }

    /// What an empty chain does.
    void copy() {
        Picture aside(source.width(), source.height(), source.filterFormat());
        source.copyTo(aside);
        result_.view().copyFrom(aside);
        result_.handOver();
    }

private:
    /// Frames that are rendered as their fields are taken apart row by row.
    bool isWhole() const { return isRenderedWhole(position.interlacing, source.height()); }

    bool serves(const FrameView& frame, const FilterChain& chain) const {
        if (!frame.isPlainBgra()) return false;
        if (!isWhole()) return true;
        return (frame.stride() < 0 || chain.takesRowsFromTheTop()) && keepsToRows(frame, chain) &&
               chain.refusal(frame.width(), frame.height(), frame.stride()).empty();
    }

    /// What lies between rows may be another picture's.
    bool keepsToRows(const FrameView& frame, const FilterChain& chain) const {
        return !isWhole() || !frame.hasGaps() || !chain.touchesGaps();
    }

    static PicturePtr copied(const Picture& picture) {
        const auto copy = std::make_shared<Picture>(picture.width(), picture.height(), picture.format());
        copyPicture(picture, *copy);
        return copy;
    }

    ResultFrame result_;
    std::atomic<bool> isCancelled_ = false;
};

}  // namespace

struct VireoStream {
    const VireoChain* chain;
    StreamHistory history;
    std::int64_t next = 0;
    std::optional<std::int64_t> skippedTo;
    std::shared_ptr<const BuiltChain> built;  ///< What the memory is of.
    std::unique_ptr<ChainMemory> memory;

    void restart() {
        history.frames.clear();
        memory.reset();
    }
};

void vireoFrameRelease(VireoFrame* frame) {
    if (frame == nullptr || frame->structSize < sizeof *frame || frame->owned == nullptr) return;
    vireoFree(frame->owned);
    frame->owned = nullptr;
    frame->pixels = nullptr;
}

VireoStatus vireoChainNeeds(const VireoChain* chain, VireoNeeds* needs) {
    return guarded([&] {
        require(chain, needs);
        const auto built = chain->built();
        VireoNeeds filled{};
        filled.depths = VireoDepth8;
        filled.takesRowsFromTheTop = 1;
        if (built != nullptr) {
            filled.earlierFrames = static_cast<std::uint32_t>(built->chain.lookBack());
            filled.readsTime = built->chain.readsTime() ? 1 : 0;
            filled.takesRowsFromTheTop = built->chain.takesRowsFromTheTop() ? 1 : 0;
        }
        const auto takes = [&](const char(&format)[5]) {
            return built == nullptr || built->chain.takesFormat(PixKit::formatCode(format));
        };
        if (takes("Bgra")) filled.depths |= VireoDepth16;
        if (takes("BGra")) filled.depths |= VireoDepthFloat;
        write(filled, needs);
    });
}

VireoStatus vireoChainAccepts(const VireoChain* chain, const VireoFrame* frame, int32_t interlacing) {
    return guarded([&] {
        require(chain, frame);
        require(interlacing >= 0 && interlacing <= 2, "interlacing is 0, 1 or 2");
        const FrameView view(read(frame), false);
        const auto built = chain->built();
        if (built != nullptr) checkAccepted(built->chain, view, static_cast<Interlacing>(interlacing));
    });
}

VireoStatus vireoChainIsIdentity(const VireoChain* chain, const VireoTime* time, int32_t* isIdentity) {
    return guarded([&] {
        require(chain, isIdentity);
        const auto built = chain->built();
        *isIdentity = built == nullptr || built->chain.isIdentity(positionOf(time)) ? 1 : 0;
    });
}

VireoStatus vireoChainSetThreads(VireoChain* chain, uint32_t threads) {
    constexpr std::uint32_t mostThreads = 1024;
    return guarded([&] {
        require(chain);
        require(threads > 0 && threads <= mostThreads, "threads are 1 to 1024");
        chain->threads = threads;
        chain->changed();
    });
}

VireoStatus vireoChainRender(const VireoChain* chain, const VireoFrame* source, VireoFrame* result,
                             const VireoTime* time, const VireoRenderOptions* given) {
    return guarded([&] {
        require(chain, source, result);
        const VireoRenderOptions options = read(given);
        const auto built = chain->built();
        const bool isReduced = built != nullptr && options.reducesDepth != 0 &&
                               !built->chain.takesFormat(FrameView(read(source), false).filterFormat());
        Call call(source, result, time, isReduced);
        if (built == nullptr) return call.copy();
        checkAccepted(built->chain, call.source, call.position.interlacing);
        const PicturePtr picture = call.sourcePicture(built->chain, false);
        const CallerHistory history(call.source, picture, call.position, options);
        const auto memory = built->chain.newMemory(1);
        call.render(*built, picture, history, *memory, options);
    });
}

VireoStatus vireoStreamNew(const VireoChain* chain, VireoStream** stream) {
    return guarded([&] {
        require(chain, stream);
        *stream = new VireoStream{chain, {}, 0, std::nullopt, nullptr, nullptr};
    });
}

void vireoStreamClose(VireoStream* stream) { delete stream; }

VireoStatus vireoStreamRestart(VireoStream* stream) {
    return guarded([&] {
        require(stream);
        stream->restart();
        stream->next = 0;
    });
}

VireoStatus vireoStreamSkip(VireoStream* stream, int64_t frame) {
    return guarded([&] {
        require(stream);
        require(frame >= 0, "frames are counted from 0");
        stream->next = frame;
        stream->skippedTo = frame;
    });
}

VireoStatus vireoStreamRender(VireoStream* stream, const VireoFrame* source, VireoFrame* result,
                              const VireoTime* time) {
    return guarded([&] {
        require(stream, source, result);
        VireoTime counted{};
        counted.structSize = sizeof counted;
        counted.frame = stream->next;
        counted.seconds = -1;
        Call call(source, result, time == nullptr ? &counted : time);
        auto& frames = stream->history.frames;
        const auto skippedTo = std::exchange(stream->skippedTo, std::nullopt);
        if (!frames.empty()) {
            const Picture& last = *frames.back().picture;
            const std::int64_t number = call.position.number, lastNumber = frames.back().position.number;
            const bool follows = (number == lastNumber + 1 || (number == skippedTo && number > lastNumber)) &&
                                 last.width() == call.source.width() &&
                                 last.height() == call.source.height() &&
                                 last.format() == call.source.filterFormat();
            if (!follows) stream->restart();
        }
        const auto built = stream->chain->built();
        stream->next = call.position.number + 1;
        if (built == nullptr) return call.copy();
        checkAccepted(built->chain, call.source, call.position.interlacing);
        if (stream->built != built || stream->memory == nullptr) {
            stream->memory = built->chain.newMemory(1);
            stream->built = built;
        }
        const auto lookBack = static_cast<std::size_t>(built->chain.lookBack());
        const PicturePtr picture = call.sourcePicture(built->chain, lookBack > 0);
        while (frames.size() > lookBack) frames.pop_front();
        if (lookBack > 0) frames.push_back({picture, call.position});
        if (frames.empty()) {
            const CallerHistory none(call.source, picture, call.position, VireoRenderOptions{});
            return call.render(*built, picture, none, *stream->memory, VireoRenderOptions{});
        }
        call.render(*built, picture, stream->history, *stream->memory, VireoRenderOptions{});
    });
}
