// SPDX-License-Identifier: MIT
#include "app/preview/window_player.h"

#include "app/preview/playback.h"
#include "app/preview/preview_window.h"
#include "app/render/pipeline.h"
#include "app/render/render_media.h"
#include "engine/error.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>

namespace vireo {
namespace {

/// "1:02:03.4".
std::string clockText(double seconds) {
    const auto tenths = static_cast<long long>(seconds * 10 + 0.5);
    const long long minutes = tenths / 600;
    char text[48];
    if (minutes >= 60) {
        std::snprintf(text, sizeof text, "%lld:%02lld:%02lld.%lld", minutes / 60, minutes % 60,
                      tenths / 10 % 60, tenths % 10);
    } else {
        std::snprintf(text, sizeof text, "%lld:%02lld.%lld", minutes, tenths / 10 % 60, tenths % 10);
    }
    return text;
}

/// "16:15" as a number; 1 where it is not known.
double ratioOf(const std::string& text) {
    int width = 0, height = 0;
    if (std::sscanf(text.c_str(), "%d:%d", &width, &height) != 2 || width < 1 || height < 1) return 1;
    return static_cast<double>(width) / height;
}

/// Leaves out the work on frames that nobody will see.
class HurriedProcessor : public FrameProcessor {
public:
    HurriedProcessor(FrameProcessor& processor, const Playback& playback)
        : processor_(processor), playback_(playback) {}

    void begin(int threads) override { processor_.begin(threads); }
    int lookBack() const override { return processor_.lookBack(); }
    std::uint32_t sourceFormat(int sourceDepth) const override {
        return processor_.sourceFormat(sourceDepth);
    }
    std::string refusal(int width, int height, std::uint32_t format, Interlacing interlacing) const override {
        return processor_.refusal(width, height, format, interlacing);
    }
    FrameShape outputShape(const FrameShape& source) const override { return processor_.outputShape(source); }
    PicturePtr process(PicturePtr source, const FramePosition& position,
                       const SourceHistory& history) override {
        return playback_.isTooLate(position) ? nothing_
                                             : processor_.process(std::move(source), position, history);
    }

    bool isNothing(const Picture& picture) const { return &picture == nothing_.get(); }

private:
    FrameProcessor& processor_;
    const Playback& playback_;
    const PicturePtr nothing_ = std::make_shared<Picture>(1, 1);
};

struct ShownFrame : OutputFrame {
    PicturePtr picture;  ///< Null where nothing was rendered.
    FramePosition position;
};

/// Shows each frame when it is due.
class WindowWriter : public NoWriter {
public:
    WindowWriter(PreviewWindow& window, Playback& playback, const HurriedProcessor& processor)
        : window_(window), playback_(playback), processor_(processor) {}

    std::unique_ptr<OutputFrame> convert(const Picture& picture, const SourceFrame& source) override {
        auto frame = std::make_unique<ShownFrame>();
        frame->position = source.position;
        if (!processor_.isNothing(picture)) frame->picture = inEightBits(picture);
        return frame;
    }

    void write(std::unique_ptr<OutputFrame> frame) override {
        auto& shown = static_cast<ShownFrame&>(*frame);
        if (shown.picture == nullptr || !playback_.waitFor(shown.position)) return;
        window_.show(std::move(shown.picture), stateOf(shown.position));
    }

private:
    static std::string stateOf(const FramePosition& position) {
        if (position.clipLength == 1) return {};
        std::string text = clockText(position.seconds);
        if (position.clipLength > 0)
            text += " / " + clockText(static_cast<double>(position.clipLength) / position.frameRate);
        return text + ", " + std::to_string(position.number);
    }

    PreviewWindow& window_;
    Playback& playback_;
    const HurriedProcessor& processor_;
};

/// A pipeline's time in a playback.
class PlaybackRun {
public:
    PlaybackRun(Playback& playback, StopRequest& stop, const Playback::Part& part) : playback_(playback) {
        playback.begin(stop, part);
    }
    PlaybackRun(const PlaybackRun&) = delete;
    PlaybackRun& operator=(const PlaybackRun&) = delete;
    ~PlaybackRun() { playback_.end(); }

private:
    Playback& playback_;
};

template <class Channel>
void copyInEightBits(const Picture& from, Picture& to, Channel white) {
    for (int y = 0; y < from.height(); ++y) {
        const auto* source = reinterpret_cast<const Channel*>(from.row(y));
        std::uint8_t* target = to.row(y);
        for (int i = 0; i < 4 * from.width(); ++i) {
            const double value = static_cast<double>(source[i]) / static_cast<double>(white);
            target[i] = static_cast<std::uint8_t>(std::clamp(value, 0.0, 1.0) * 255 + 0.5);
        }
    }
}

}  // namespace

PicturePtr inEightBits(const Picture& picture) {
    const auto copy = std::make_shared<Picture>(picture.width(), picture.height());
    if (picture.format() == formatBgraFloat) {
        copyInEightBits<float>(picture, *copy, 1);
    } else if (picture.format() == formatBgra16) {
        copyInEightBits<std::uint16_t>(picture, *copy, 65535);
    } else {
        for (int y = 0; y < picture.height(); ++y)
            std::memcpy(copy->row(y), picture.row(y),
                        std::size_t{4} * static_cast<std::size_t>(picture.width()));
    }
    return copy;
}

void playInWindow(const RenderJob& asked, FrameProcessor& processor, const std::string& title) {
    const InterruptionGuard guard;
    Messages messages(asked.quiet);
    Playback playback;
    HurriedProcessor hurried(processor, playback);
    std::unique_ptr<PreviewWindow> window;
    RenderJob job = asked;
    job.output.clear();
    Playback::Part part;
    while (true) {
        StopRequest stop;
        Media media = openMedia(job, hurried, stop, messages);
        const SourceInfo& info = media.reader->info();
        if (window == nullptr) {
            part = {info.firstFrame, std::nullopt, info.frameRate};
            if (info.framesExpected > 0) part.last = lastOf(info.firstFrame, info.framesExpected);
            const FrameShape shape = processor.outputShape({info.width, info.height, info.alpha});
            window = std::make_unique<PreviewWindow>(playback, title, shape.width, shape.height,
                                                     ratioOf(media.description.input.pixelAspect));
        }
        media.writer = std::make_unique<WindowWriter>(*window, playback, hurried);
        const int jobs = framesAtOnce(job.jobs);
        processor.begin(jobs);
        const PlaybackRun run(playback, stop, part);
        std::string damage;
        const std::int64_t frames = runPipeline(
            media, hurried, jobs, stop,
            {.written = [](std::int64_t) {},
             .damaged =
                 [&](Damage kind, std::int64_t frame, const std::string& why) {
                     if (kind == Damage::Lost) damage = why;
                     if (job.strict)
                         throw Error(job.input + ": frame " + std::to_string(frame) + " is damaged: " + why);
                 }});
        if (frames == 0 && !playback.isOver()) {
            throw Error(job.input + (damage.empty() ? ": there is no frame to show in the range asked for"
                                                    : ": no frame can be read: " + damage));
        }
        const auto next = playback.nextWish();
        if (!next) return;
        job.start.reset();
        job.duration.reset();
        job.durationFrames.reset();
        job.frames = FrameRange{*next, part.last};
    }
}

}  // namespace vireo
