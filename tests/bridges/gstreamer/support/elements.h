// SPDX-License-Identifier: MIT
// Elements in a harness, and what the engine makes of the same frames.
#ifndef VIREO_TESTS_BRIDGES_GSTREAMER_ELEMENTS_H
#define VIREO_TESTS_BRIDGES_GSTREAMER_ELEMENTS_H

#include "vireo/vireo.h"

#include <gst/check/gstharness.h>
#include <gst/gst.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vireo::gstreamer {

using Bytes = std::vector<std::uint8_t>;

/// Starts GStreamer with the plug-in that is tested.
void startGstreamer();

/// A video format as caps name it and as the engine does.
struct Format {
    const char* name;
    VireoLayout layout;
    int bytes;
};
inline constexpr Format bgra{"BGRA", VireoBgra, 4};

struct Shape {
    int width = 21, height = 15;
    Format format = bgra;

    /// GStreamer's rows are whole words.
    int stride() const { return (width * format.bytes + 3) & ~3; }
    std::size_t size() const { return static_cast<std::size_t>(stride()) * static_cast<std::size_t>(height); }
};

/// Noise that hangs on the number, with nothing between the rows.
Bytes noise(const Shape& shape, int number);

/// Pixels of a buffer, or a frame, with nothing between the rows.
Bytes pixelsOf(GstBuffer* buffer, const Shape& shape);

/// A chain of the engine's.
class Reference {
public:
    explicit Reference(const std::string& filters, const Shape& shape = {});
    ~Reference();
    Reference(const Reference&) = delete;
    Reference& operator=(const Reference&) = delete;

    /// What a stream makes of the next frame.
    Bytes operator()(const Bytes& source, std::int64_t frame, std::int64_t clipLength = 0,
                     int interlacing = 0);
    void restart();

    /// Frames before this one are lost.
    void skip(std::int64_t frame);

    /// The chain as a settings file.
    std::string settings() const;

private:
    Shape shape_;
    VireoEngine* engine_ = nullptr;
    VireoChain* chain_ = nullptr;
    VireoStream* stream_ = nullptr;
};

/// An element between pads of the test's own, at 25 frames a second unless `more` caps say otherwise.
class Element {
public:
    /// As a pipeline's text has it.
    explicit Element(const std::string& text, const Shape& shape = {},
                     const std::string& more = "framerate=25/1");
    ~Element();
    Element(const Element&) = delete;
    Element& operator=(const Element&) = delete;

    GstHarness* harness() { return harness_; }
    GstElement* element() { return element_; }

    /// A buffer of a frame. Taken by push().
    GstBuffer* buffer(const Bytes& pixels, std::int64_t frame) const;

    /// Null where nothing comes out. Unreffed by who gets it.
    GstBuffer* push(GstBuffer* buffer);

    /// The pixels that come out; empty where nothing does.
    Bytes operator()(const Bytes& pixels, std::int64_t frame);

    /// The first message of a kind, or empty.
    std::string message(GstMessageType type);

private:
    Shape shape_;
    GstElement* element_;
    GstHarness* harness_;
    GstBus* bus_;
};

}  // namespace vireo::gstreamer

#endif
