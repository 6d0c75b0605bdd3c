// SPDX-License-Identifier: MIT
#include "bridges/gstreamer/video_filter.h"

#include "bridges/gstreamer/video_frames.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vireo::gstreamer {
namespace {

constexpr guint mostThreads = 1024;

/// More frames are not lost on the way: time jumps.
constexpr std::int64_t mostLostFrames = 25;

enum : guint { PropThreads = sharedProperties, PropClipLength };

GObjectClass* parentClass = nullptr;

VideoFilter* of(gpointer object) { return static_cast<VideoFilter*>(object); }
GstVideoFilter* videoFilter(VideoFilter* filter) { return &filter->parent; }
GstBaseTransform* transformOf(VideoFilter* filter) { return &filter->parent.element; }

VireoNeeds needsOf(const VireoChain* chain) {
    VireoNeeds needs{};
    needs.structSize = sizeof needs;
    vireoChainNeeds(chain, &needs);
    return needs;
}

// What comes before a buffer.

void updateThreads(VideoFilter* filter) {
    Rendering& rendering = *filter->rendering;
    GST_OBJECT_LOCK(filter);
    guint threads = filter->threads;
    GST_OBJECT_UNLOCK(filter);
    if (threads == 0) threads = std::min<guint>(g_get_num_processors(), mostThreads);
    if (threads == rendering.threads) return;
    if (vireoChainSetThreads(rendering.chain.get(), threads) == VireoDone) rendering.threads = threads;
}

std::string update(VideoFilter* filter) {
    updateThreads(filter);
    const auto* type = G_TYPE_INSTANCE_GET_CLASS(filter, videoFilterType(), VideoFilterClass);
    return type->updateChain(filter, filter->rendering->chain.get());
}

std::optional<double> secondsOf(const GstSegment& segment, const GstBuffer* buffer) {
    if (segment.format != GST_FORMAT_TIME || !GST_BUFFER_PTS_IS_VALID(buffer)) return std::nullopt;
    guint64 time;
    const gint sign =
        gst_segment_to_stream_time_full(&segment, GST_FORMAT_TIME, GST_BUFFER_PTS(buffer), &time);
    if (sign == 0) return std::nullopt;
    return static_cast<double>(sign) * static_cast<double>(time) / static_cast<double>(GST_SECOND);
}

std::int64_t clipFrames(VideoFilter* filter) {
    Rendering& rendering = *filter->rendering;
    GST_OBJECT_LOCK(filter);
    const gint64 given = filter->clipLength;
    GST_OBJECT_UNLOCK(filter);
    if (given > 0) return given;
    // Parsers learn of it on the way.
    gint64 duration = 0;
    GstPad* const pad = GST_BASE_TRANSFORM_SINK_PAD(transformOf(filter));
    if (rendering.clipFrames == 0 && rendering.clock.rate() > 0 &&
        gst_pad_peer_query_duration(pad, GST_FORMAT_TIME, &duration) != FALSE && duration > 0) {
        const double frames = static_cast<double>(duration) / GST_SECOND * rendering.clock.rate();
        rendering.clipFrames = std::llround(std::min<double>(frames, INT32_MAX));
    }
    return rendering.clipFrames;
}

void beforeTransform(GstBaseTransform* transform, GstBuffer* buffer) {
    VideoFilter* const filter = of(transform);
    Rendering& rendering = *filter->rendering;
    const std::optional<double> seconds = secondsOf(transform->segment, buffer);
    if (seconds && *seconds >= 0) {
        gst_object_sync_values(GST_OBJECT(transform),
                               static_cast<GstClockTime>(std::llround(*seconds * GST_SECOND)));
    }
    if (const std::string failure = update(filter); !failure.empty())
        GST_ELEMENT_WARNING(transform, RESOURCE, SETTINGS, ("%s", failure.c_str()),
                            ("The chain stays as it was"));

    const VireoNeeds needs = needsOf(rendering.chain.get());
    VireoTime& time = rendering.time;
    time.structSize = sizeof time;
    time.interlacing = interlacingOf(videoFilter(filter)->in_info, buffer);
    time.rate = rendering.clock.rate();
    time.frame = rendering.clock.next(seconds);
    time.frames = needs.readsTime != 0 ? clipFrames(filter) : 0;
    time.seconds = time.rate == 0 && seconds && *seconds >= 0 ? *seconds : -1;

    std::int32_t isIdentity = 0;
    if (needs.earlierFrames == 0) vireoChainIsIdentity(rendering.chain.get(), &time, &isIdentity);
    gst_base_transform_set_passthrough(transform, isIdentity != 0 ? TRUE : FALSE);
    GST_LOG_OBJECT(transform, "frame %" G_GINT64_FORMAT " of %" G_GINT64_FORMAT "%s", time.frame, time.frames,
                   isIdentity != 0 ? " passes as it is" : "");
}

// Buffers.

GstFlowReturn transformFrame(GstVideoFilter* element, GstVideoFrame* source, GstVideoFrame* result) {
    Rendering& rendering = *of(element)->rendering;
    const VireoFrame from = frameOf(*source);
    VireoFrame to = frameOf(*result);
    const std::int64_t frame = rendering.time.frame;
    if (const auto last = std::exchange(rendering.last, frame); last && frame - *last <= mostLostFrames)
        vireoStreamSkip(rendering.stream.get(), frame);
    if (vireoStreamRender(rendering.stream.get(), &from, &to, &rendering.time) == VireoDone)
        return GST_FLOW_OK;
    GST_ELEMENT_ERROR(element, STREAM, FAILED, ("%s", vireoLastError()->sentence), (nullptr));
    return GST_FLOW_ERROR;
}

void beginAnew(Rendering& rendering) {
    rendering.clock.restart();
    rendering.last.reset();
    rendering.clipFrames = 0;
    vireoStreamRestart(rendering.stream.get());
}

gboolean setInfo(GstVideoFilter* element, GstCaps*, GstVideoInfo* info, GstCaps*, GstVideoInfo*) {
    Rendering& rendering = *of(element)->rendering;
    if (GST_VIDEO_INFO_INTERLACE_MODE(info) >= GST_VIDEO_INTERLACE_MODE_FIELDS) {
        GST_ELEMENT_ERROR(element, STREAM, FORMAT, ("Fields in buffers of their own are not rendered"),
                          (nullptr));
        return FALSE;
    }
    const VireoFrame frame = frameOf(*info);
    if (vireoChainAccepts(rendering.chain.get(), &frame, interlacingOf(*info, nullptr)) != VireoDone) {
        GST_ELEMENT_ERROR(element, STREAM, FORMAT, ("%s", vireoLastError()->sentence), (nullptr));
        return FALSE;
    }
    const double rate = static_cast<double>(GST_VIDEO_INFO_FPS_N(info)) / GST_VIDEO_INFO_FPS_D(info);
    if (rate != rendering.clock.rate()) rendering.clock = FrameClock(rate);
    return TRUE;
}

gboolean onSinkEvent(GstBaseTransform* transform, GstEvent* event) {
    Rendering& rendering = *of(transform)->rendering;
    switch (GST_EVENT_TYPE(event)) {
        case GST_EVENT_STREAM_START:
        case GST_EVENT_FLUSH_STOP: beginAnew(rendering); break;
        case GST_EVENT_SEGMENT: rendering.clipFrames = 0; break;
        default: break;
    }
    return GST_BASE_TRANSFORM_CLASS(parentClass)->sink_event(transform, event);
}

gboolean start(GstBaseTransform* transform) {
    VideoFilter* const filter = of(transform);
    const bool isMade = filter->rendering->stream != nullptr;
    const std::string failure = isMade ? update(filter) : "Memory is short";
    if (failure.empty()) return TRUE;
    GST_ELEMENT_ERROR(transform, RESOURCE, SETTINGS, ("%s", failure.c_str()), (nullptr));
    return FALSE;
}

gboolean stop(GstBaseTransform* transform) {
    beginAnew(*of(transform)->rendering);
    return TRUE;
}

// The type.

void initInstance(GTypeInstance* instance, gpointer) {
    VideoFilter* const filter = of(instance);
    filter->rendering = new Rendering;
    filter->threads = 1;
    VireoChain* chain = nullptr;
    VireoStream* stream = nullptr;
    if (vireoChainNew(engine(), &chain) == VireoDone && vireoStreamNew(chain, &stream) != VireoDone)
        GST_ERROR_OBJECT(instance, "%s", vireoLastError()->sentence);
    filter->rendering->chain.reset(chain);
    filter->rendering->stream.reset(stream);
}

void finalize(GObject* object) {
    delete of(object)->rendering;
    parentClass->finalize(object);
}

void initClass(gpointer type, gpointer) {
    parentClass = static_cast<GObjectClass*>(g_type_class_peek_parent(type));
    auto* const object = static_cast<GObjectClass*>(type);
    object->finalize = finalize;
    object->set_property = setSharedProperty;
    object->get_property = getSharedProperty;
    g_object_class_install_property(
        object, PropThreads,
        g_param_spec_uint("n-threads", "Threads", "Threads that share a frame (0 = one a processor)", 0,
                          mostThreads, 1,
                          static_cast<GParamFlags>(G_PARAM_READWRITE | GST_PARAM_MUTABLE_PLAYING)));

    GstCaps* const caps = gst_caps_from_string(GST_VIDEO_CAPS_MAKE(VIREO_VIDEO_FORMATS));
    for (const auto& [name, direction] : {std::pair("sink", GST_PAD_SINK), std::pair("src", GST_PAD_SRC)})
        gst_element_class_add_pad_template(GST_ELEMENT_CLASS(type),
                                           gst_pad_template_new(name, direction, GST_PAD_ALWAYS, caps));
    gst_caps_unref(caps);

    auto* const transform = GST_BASE_TRANSFORM_CLASS(type);
    transform->start = start;
    transform->stop = stop;
    transform->sink_event = onSinkEvent;
    transform->before_transform = beforeTransform;
    auto* const video = GST_VIDEO_FILTER_CLASS(type);
    video->set_info = setInfo;
    video->transform_frame = transformFrame;
}

GType newType(GType parent, const char* name, const GTypeInfo& info, GTypeFlags flags) {
    const GType type = g_type_register_static(parent, name, &info, flags);
    gst_type_mark_as_plugin_api(type, static_cast<GstPluginAPIFlags>(0));
    return type;
}

}  // namespace

GType videoFilterType() {
    static const GType type = [] {
        GTypeInfo info{};
        info.class_size = sizeof(VideoFilterClass);
        info.class_init = initClass;
        info.instance_size = sizeof(VideoFilter);
        info.instance_init = initInstance;
        return newType(GST_TYPE_VIDEO_FILTER, "GstVireoVideoFilter", info, G_TYPE_FLAG_ABSTRACT);
    }();
    return type;
}

void installClipLength(GObjectClass* type) {
    g_object_class_install_property(
        type, PropClipLength,
        g_param_spec_int64("clip-length", "Clip length", "Frames of the whole clip (0 = as upstream knows)",
                           0, G_MAXINT32, 0,
                           static_cast<GParamFlags>(G_PARAM_READWRITE | GST_PARAM_MUTABLE_PLAYING)));
}

void setSharedProperty(GObject* object, guint id, const GValue* value, GParamSpec* property) {
    VideoFilter* const filter = of(object);
    GST_OBJECT_LOCK(filter);
    switch (id) {
        case PropThreads: filter->threads = g_value_get_uint(value); break;
        case PropClipLength: filter->clipLength = g_value_get_int64(value); break;
        default: G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, property); break;
    }
    GST_OBJECT_UNLOCK(filter);
}

void getSharedProperty(GObject* object, guint id, GValue* value, GParamSpec* property) {
    VideoFilter* const filter = of(object);
    GST_OBJECT_LOCK(filter);
    switch (id) {
        case PropThreads: g_value_set_uint(value, filter->threads); break;
        case PropClipLength: g_value_set_int64(value, filter->clipLength); break;
        default: G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, property); break;
    }
    GST_OBJECT_UNLOCK(filter);
}

bool registerElement(GstPlugin* plugin, const ElementType& facts) {
    GTypeInfo info{};
    info.class_size = static_cast<guint16>(facts.classSize);
    info.class_init = facts.initClass;
    info.class_data = facts.classData;
    info.instance_size = static_cast<guint16>(facts.instanceSize);
    info.instance_init = facts.initInstance;
    const GType type = newType(videoFilterType(), facts.type, info, static_cast<GTypeFlags>(0));
    return gst_element_register(plugin, facts.element, GST_RANK_NONE, type) != FALSE;
}

void describeElement(gpointer type, const char* name, const char* description) {
    gst_element_class_set_metadata(GST_ELEMENT_CLASS(type), name, "Filter/Effect/Video", description,
                                   "Vireo developers <developers@vireo.invalid>");
}

}  // namespace vireo::gstreamer
