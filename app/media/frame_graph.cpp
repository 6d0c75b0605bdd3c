// SPDX-License-Identifier: MIT
#include "app/media/frame_graph.h"

#include "app/media/pixel_format.h"
#include "engine/error.h"

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}

namespace vireo {
namespace {

std::string size(int width, int height) { return std::to_string(width) + " x " + std::to_string(height); }

/// A side that follows the other one.
int followingSide(int side, int other, int otherBefore, int before) {
    const int factor = -side;
    const std::int64_t parts = av_rescale(other, before, std::int64_t{otherBefore} * factor);
    return static_cast<int>(std::clamp<std::int64_t>(parts, 1, std::numeric_limits<int>::max() / factor)) *
           factor;
}

void fitScale(Preparation::Scale& scale, int width, int height, const std::string& name) {
    constexpr std::int64_t longest = 32768, most = std::int64_t{1} << 28;
    if (scale.width < 0) scale.width = followingSide(scale.width, scale.height, height, width);
    if (scale.height < 0) scale.height = followingSide(scale.height, scale.width, width, height);
    if (scale.width > longest || scale.height > longest || std::int64_t{scale.width} * scale.height > most) {
        throw Error(name + ": --scale would make pictures of " + size(scale.width, scale.height) +
                    ", which is too large: sides go up to 32768, both together to 268435456 pixels");
    }
}

/// Moves the corner to where colours begin too, which may be stored for several pixels at once.
std::string fitCrop(Preparation::Crop& crop, const VideoProperties& video, bool isInterlaced,
                    const std::string& name) {
    const int width = video.uprightWidth(), height = video.uprightHeight();
    if (crop.width > width - crop.left || crop.height > height - crop.top) {
        throw Error(name + ": --crop " + std::to_string(crop.width) + ':' + std::to_string(crop.height) +
                    ':' + std::to_string(crop.left) + ':' + std::to_string(crop.top) +
                    " reaches outside the picture, which is " + size(width, height));
    }
    const AVPixFmtDescriptor& format = descriptionOf(video.format);
    int stepX = 1 << format.log2_chroma_w, stepY = 1 << format.log2_chroma_h;
    if (video.orientation.transpose) std::swap(stepX, stepY);
    if (isInterlaced) stepY *= 2;  // rows keep their field
    const int left = crop.left / stepX * stepX, top = crop.top / stepY * stepY;
    if (left == crop.left && top == crop.top) return {};
    crop.left = left;
    crop.top = top;
    return "--crop begins at " + std::to_string(left) + ':' + std::to_string(top) + ", since " +
           (isInterlaced ? "fields and colours" : "the colours") + " of the input are stored for " +
           size(stepX, stepY) + " pixels";
}

AVFilterContext* newFilter(AVFilterGraph* graph, const char* kind, const std::string& arguments) {
    AVFilterContext* filter = nullptr;
    check(avfilter_graph_create_filter(&filter, avfilter_get_by_name(kind), kind, arguments.c_str(), nullptr,
                                       graph),
          "cannot prepare frames");
    return filter;
}

std::string ratio(AVRational value) { return std::to_string(value.num) + '/' + std::to_string(value.den); }

}  // namespace

GraphPlan planGraph(const Preparation& preparation, const VideoProperties& video, const std::string& name) {
    GraphPlan plan{preparation, video.uprightWidth(), video.uprightHeight(), {}};
    const bool isInterlaced = video.interlacing != Interlacing::Progressive;
    int width = plan.width, height = plan.height;
    if (preparation.deinterlace && !isInterlaced)
        plan.note =
            "the input is not interlaced and --deinterlace leaves it as it is; --interlaced tells otherwise";
    if (auto& crop = plan.preparation.crop) {
        const std::string note = fitCrop(*crop, video, isInterlaced && !preparation.deinterlace, name);
        if (!note.empty()) plan.note += (plan.note.empty() ? "" : "; ") + note;
        width = crop->width;
        height = crop->height;
    }
    if (auto& scale = plan.preparation.scale) fitScale(*scale, width, height, name);
    return plan;
}

FrameGraph::FrameGraph(const GraphPlan& plan, const AVFrame& first, const VideoProperties& video,
                       AVRational timeBase)
    : graph_(avfilter_graph_alloc()), format_(first.format), width_(first.width), height_(first.height) {
    if (graph_ == nullptr) throw std::bad_alloc();
    captureLibraryMessages();
    // Samples mean the same on both sides of every conversion.
    const std::string range = video.coding.fullRange ? "pc" : "tv";
    const std::string scaling =
        "flags=bicubic+accurate_rnd+full_chroma_int:in_range=" + range + ":out_range=" + range;
    graph_->scale_sws_opts = av_strdup(scaling.c_str());
    source_ =
        newFilter(graph_.get(), "buffer",
                  "video_size=" + std::to_string(width_) + 'x' + std::to_string(height_) +
                      ":pix_fmt=" + std::to_string(format_) + ":time_base=" + ratio(timeBase) +
                      ":pixel_aspect=" + ratio({video.pixelAspect.num, std::max(1, video.pixelAspect.den)}));
    sink_ = newFilter(graph_.get(), "buffersink", "");

    AVFilterInOut* outputs = avfilter_inout_alloc();
    AVFilterInOut* inputs = avfilter_inout_alloc();
    if (outputs == nullptr || inputs == nullptr) throw std::bad_alloc();
    *outputs = {av_strdup("in"), source_, 0, nullptr};
    *inputs = {av_strdup("out"), sink_, 0, nullptr};
    const int parsed =
        avfilter_graph_parse_ptr(graph_.get(), text(plan, first, video).c_str(), &inputs, &outputs, nullptr);
    avfilter_inout_free(&inputs);
    avfilter_inout_free(&outputs);
    check(parsed, "cannot prepare frames");
    check(avfilter_graph_config(graph_.get(), nullptr), "cannot prepare frames");
}

std::string FrameGraph::text(const GraphPlan& plan, const AVFrame& first,
                             const VideoProperties& video) const {
    std::string filters;
    const auto add = [&](const std::string& filter) { filters += (filters.empty() ? "" : ",") + filter; };
    const auto scaled = [&](int width, int height) {
        add("scale=" + std::to_string(width) + ':' + std::to_string(height) +
            ":interl=-1:" + graph_->scale_sws_opts);
    };
    if (first.format == AV_PIX_FMT_PAL8) add("format=bgra");
    if (plan.preparation.deinterlace) add("bwdif=mode=send_frame:parity=auto:deint=interlaced");
    if (const auto& rate = plan.preparation.rate)
        add("fps=fps=" + ratio({rate->numerator, rate->denominator}) + ":round=near:eof_action=pass");
    const Orientation& orientation = video.orientation;
    if (orientation.transpose) add("transpose=cclock_flip");
    if (orientation.mirrorX) add("hflip");
    if (orientation.mirrorY) add("vflip");
    const int width = orientation.transpose ? first.height : first.width;
    const int height = orientation.transpose ? first.width : first.height;
    if (width != plan.width || height != plan.height) scaled(plan.width, plan.height);
    if (const auto& crop = plan.preparation.crop) {
        add("crop=" + std::to_string(crop->width) + ':' + std::to_string(crop->height) + ':' +
            std::to_string(crop->left) + ':' + std::to_string(crop->top) + ":exact=1");
    }
    if (const auto& scale = plan.preparation.scale) scaled(scale->width, scale->height);
    return filters.empty() ? "null" : filters;
}

bool FrameGraph::takes(const AVFrame& frame) const {
    return frame.format == format_ && frame.width == width_ && frame.height == height_;
}

void FrameGraph::push(FramePtr frame) {
    check(av_buffersrc_add_frame(source_, frame.get()), "cannot prepare a frame");
}

void FrameGraph::end(std::int64_t time) {
    check(av_buffersrc_close(source_, time, 0), "cannot prepare the last frame");
}

FramePtr FrameGraph::pull() {
    FramePtr frame = newFrame();
    const int got = av_buffersink_get_frame(sink_, frame.get());
    if (got == AVERROR(EAGAIN) || got == AVERROR_EOF) return nullptr;
    check(got, "cannot prepare a frame");
    return frame;
}

AVRational FrameGraph::timeBase() const { return av_buffersink_get_time_base(sink_); }

VideoProperties FrameGraph::outputOf(const VideoProperties& video) const {
    VideoProperties output = video;
    output.format = static_cast<AVPixelFormat>(av_buffersink_get_format(sink_));
    output.width = av_buffersink_get_w(sink_);
    output.height = av_buffersink_get_h(sink_);
    output.pixelAspect = av_buffersink_get_sample_aspect_ratio(sink_);
    output.orientation = {};
    const bool isResized = output.width != video.uprightWidth() || output.height != video.uprightHeight();
    // A player guesses the colours of an untagged video by its height.
    if (isResized && output.matrix == AVCOL_SPC_UNSPECIFIED && !formatIsRgb(video.format))
        output.matrix = output.coding.matrix;
    return output;
}

}  // namespace vireo
