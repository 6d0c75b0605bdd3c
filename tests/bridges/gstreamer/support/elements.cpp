// SPDX-License-Identifier: MIT
#include "tests/bridges/gstreamer/support/elements.h"

#include <gtest/gtest.h>

#include <random>

namespace vireo::gstreamer {

void startGstreamer() {
    static const bool isStarted = [] {
        gst_init(nullptr, nullptr);
        GError* error = nullptr;
        GstPlugin* const plugin = gst_plugin_load_file(VIREO_TESTED_PLUGIN, &error);
        if (plugin == nullptr) throw std::runtime_error(error->message);
        gst_object_unref(plugin);
        return true;
    }();
    (void)isStarted;
}

Bytes noise(const Shape& shape, int number) {
    std::mt19937 random(static_cast<unsigned>(number));
    Bytes pixels(shape.size());
    for (int y = 0; y < shape.height; ++y)
        for (int x = 0; x < shape.width * shape.format.bytes; ++x)
            pixels[static_cast<std::size_t>(y * shape.stride() + x)] = static_cast<std::uint8_t>(random());
    return pixels;
}

Bytes pixelsOf(GstBuffer* buffer, const Shape& shape) {
    Bytes pixels(gst_buffer_get_size(buffer));
    gst_buffer_extract(buffer, 0, pixels.data(), pixels.size());
    EXPECT_EQ(pixels.size(), shape.size());
    for (int y = 0; y < shape.height; ++y)
        for (int x = shape.width * shape.format.bytes; x < shape.stride(); ++x)
            pixels.at(static_cast<std::size_t>(y * shape.stride() + x)) = 0;
    return pixels;
}

Reference::Reference(const std::string& filters, const Shape& shape) : shape_(shape) {
    EXPECT_EQ(vireoOpen(nullptr, &engine_), VireoDone);
    EXPECT_EQ(vireoChainNew(engine_, &chain_), VireoDone);
    EXPECT_EQ(vireoChainAddText(chain_, filters.c_str()), VireoDone) << vireoLastError()->sentence;
    EXPECT_EQ(vireoStreamNew(chain_, &stream_), VireoDone);
}

Reference::~Reference() {
    vireoStreamClose(stream_);
    vireoChainClose(chain_);
    vireoClose(engine_);
}

Bytes Reference::operator()(const Bytes& source, std::int64_t frame, std::int64_t clipLength,
                            int interlacing) {
    Bytes from = source, to(shape_.size());
    VireoFrame given{};
    given.structSize = sizeof given;
    given.width = shape_.width;
    given.height = shape_.height;
    given.layout = shape_.format.layout;
    given.stride = shape_.stride();
    given.pixels = from.data();
    VireoFrame result = given;
    result.pixels = to.data();
    const VireoTime time{sizeof time, interlacing, frame, clipLength, 25, -1};
    EXPECT_EQ(vireoStreamRender(stream_, &given, &result, &time), VireoDone) << vireoLastError()->sentence;
    return to;
}

std::string Reference::settings() const {
    char* text = nullptr;
    EXPECT_EQ(vireoChainSettings(chain_, &text), VireoDone);
    std::string settings = text;
    vireoFree(text);
    return settings;
}

void Reference::restart() { vireoStreamRestart(stream_); }

void Reference::skip(std::int64_t frame) { vireoStreamSkip(stream_, frame); }

Element::Element(const std::string& text, const Shape& shape, const std::string& more) : shape_(shape) {
    startGstreamer();
    GError* error = nullptr;
    element_ = GST_ELEMENT(gst_object_ref_sink(gst_parse_launch(text.c_str(), &error)));
    if (error != nullptr) throw std::runtime_error(error->message);
    bus_ = gst_bus_new();
    gst_element_set_bus(element_, bus_);
    harness_ = gst_harness_new_with_element(element_, "sink", "src");
    const std::string caps = std::string("video/x-raw,format=") + shape.format.name +
                             ",width=" + std::to_string(shape.width) +
                             ",height=" + std::to_string(shape.height) + "," + more;
    gst_harness_set_src_caps_str(harness_, caps.c_str());
}

Element::~Element() {
    gst_harness_teardown(harness_);
    gst_element_set_bus(element_, nullptr);
    gst_object_unref(bus_);
    gst_object_unref(element_);
}

GstBuffer* Element::buffer(const Bytes& pixels, std::int64_t frame) const {
    GstBuffer* const buffer = gst_buffer_new_memdup(pixels.data(), pixels.size());
    GST_BUFFER_PTS(buffer) = static_cast<GstClockTime>(frame) * GST_SECOND / 25;
    GST_BUFFER_DURATION(buffer) = GST_SECOND / 25;
    return buffer;
}

GstBuffer* Element::push(GstBuffer* buffer) {
    gst_harness_push(harness_, buffer);
    return gst_harness_try_pull(harness_);
}

Bytes Element::operator()(const Bytes& pixels, std::int64_t frame) {
    GstBuffer* const result = push(buffer(pixels, frame));
    if (result == nullptr) return {};
    Bytes made = pixelsOf(result, shape_);
    gst_buffer_unref(result);
    return made;
}

std::string Element::message(GstMessageType type) {
    GstMessage* const message = gst_bus_pop_filtered(bus_, type);
    if (message == nullptr) return {};
    GError* error = nullptr;
    std::string text = GST_MESSAGE_TYPE_NAME(message);
    if (type == GST_MESSAGE_ERROR) gst_message_parse_error(message, &error, nullptr);
    if (type == GST_MESSAGE_WARNING) gst_message_parse_warning(message, &error, nullptr);
    if (error != nullptr) text = error->message;
    g_clear_error(&error);
    gst_message_unref(message);
    return text;
}

}  // namespace vireo::gstreamer
