// SPDX-License-Identifier: MIT
// What the elements share: buffers through a chain.
#ifndef VIREO_BRIDGES_GSTREAMER_VIDEO_FILTER_H
#define VIREO_BRIDGES_GSTREAMER_VIDEO_FILTER_H

#include "bridges/gstreamer/engine.h"
#include "bridges/gstreamer/frame_clock.h"

#include <gst/video/gstvideofilter.h>

#include <optional>
#include <string>

namespace vireo::gstreamer {

/// What the streaming thread works with.
struct Rendering {
    ChainPtr chain;
    StreamPtr stream;
    guint threads = 1;  ///< That the chain has.
    FrameClock clock;
    std::int64_t clipFrames = 0;       ///< As upstream has it; 0 where it does not know yet.
    std::optional<std::int64_t> last;  ///< The frame that the stream rendered last.
    VireoTime time{};                  ///< Of the buffer that is on its way.
};

struct VideoFilter {
    GstVideoFilter parent;
    Rendering* rendering;

    // Under the object's lock.
    guint threads;      ///< 0: as many as there are processors.
    gint64 clipLength;  ///< 0: what upstream knows.
};

struct VideoFilterClass {
    GstVideoFilterClass parent;

    /// Brings the chain to what the element's properties say, before it starts and before each buffer. Empty,
    /// or why it cannot; the chain then stays as it was.
    std::string (*updateChain)(VideoFilter* filter, VireoChain* chain);
};

/// The abstract type that elements are made from.
GType videoFilterType();

/// For types whose pictures hang on the clip's length.
void installClipLength(GObjectClass* type);

/// The properties of every element have numbers from here on.
inline constexpr guint sharedProperties = 1000;
void setSharedProperty(GObject* object, guint id, const GValue* value, GParamSpec* property);
void getSharedProperty(GObject* object, guint id, GValue* value, GParamSpec* property);

/// Registers a type and its element.
struct ElementType {
    const char* element;
    const char* type;
    GClassInitFunc initClass;
    gconstpointer classData;
    guint classSize;
    guint instanceSize;
    GInstanceInitFunc initInstance;
};
bool registerElement(GstPlugin* plugin, const ElementType& facts);

/// What gst-inspect-1.0 shows of an element.
void describeElement(gpointer type, const char* name, const char* description);

}  // namespace vireo::gstreamer

#endif
