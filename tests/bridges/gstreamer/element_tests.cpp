// SPDX-License-Identifier: MIT
// What elements make of their properties and of a frame's form.
#include "tests/bridges/gstreamer/support/elements.h"

#include <gst/controller/controller.h>
#include <gst/video/video.h>
#include <gtest/gtest.h>

#include <fstream>

namespace vireo::gstreamer {
namespace {

constexpr Format formats[] = {
    {"BGRA", VireoBgra, 4}, {"RGBA", VireoRgba, 4}, {"ARGB", VireoArgb, 4},  {"ABGR", VireoAbgr, 4},
    {"BGRx", VireoBgrx, 4}, {"RGBx", VireoRgbx, 4}, {"xRGB", VireoXrgb, 4},  {"xBGR", VireoXbgr, 4},
    {"BGR", VireoBgr, 3},   {"RGB", VireoRgb, 3},   {"GRAY8", VireoGrey, 1},
};

TEST(GstreamerElement, TakesEveryFormatAndOddSizes) {
    const char chain[] =
        "Color Balance (RGB):red=180,blue=300; Convolution Kernel:m11=-2,m22=5; Vertical Flip";
    for (const Format& format : formats) {
        for (const auto& [width, height] :
             {std::pair(21, 15), std::pair(1, 1), std::pair(2, 33), std::pair(67, 2)}) {
            SCOPED_TRACE(std::string(format.name) + " " + std::to_string(width) + "x" +
                         std::to_string(height));
            const Shape shape{width, height, format};
            Element element(std::string("vireo filters=\"") + chain + "\"", shape);
            const Bytes source = noise(shape, width);
            EXPECT_EQ(element(source, 0), Reference(chain, shape)(source, 0));
        }
    }
}

TEST(GstreamerElement, RendersPropertiesAsTheirParameters) {
    const Bytes source = noise({}, 1);
    for (const auto& [element, filters] : {
             std::pair("vireolevels rgb-gamma=140 b-black-input-level=30",
                       "Levels:(rgb) gamma=140,(b) black input=30"),
             std::pair("vireobend horizontal-source=square vertical-frequency=2 fill-color=0x80ff8000",
                       "Bend:horizontal source=3,vertical frequency=2,fill color=#ff8000"),
             std::pair("vireoextract invert=true softness=25 mix=40",
                       "Extract:invert=on,softness=25,mix=40%"),
             std::pair("vireolensdistortion curvature=-40 n-threads=3", "Lens Distortion:curvature=-40"),
             std::pair("vireoblackandwhite n-threads=0", "Black & White"),
         })
        EXPECT_EQ(Element(element)(source, 0), Reference(filters)(source, 0)) << element;
}

TEST(GstreamerElement, ChangesWhileItPlays) {
    Element solarize("vireosolarize");
    Element chain("vireo filters=Solarize");
    Reference fresh("Solarize"), changed("Solarize:threshold=200,mix=30%");
    const Bytes source = noise({}, 2);
    EXPECT_EQ(solarize(source, 0), fresh(source, 0));
    EXPECT_EQ(chain(source, 0), fresh(source, 0));
    g_object_set(solarize.element(), "threshold", 200, "mix", 30, nullptr);
    g_object_set(chain.element(), "filters", "Solarize:threshold=200,mix=30%", nullptr);
    EXPECT_EQ(solarize(source, 1), changed(source, 0));
    EXPECT_EQ(chain(source, 1), changed(source, 0));

    // What cannot be is told once, and the picture goes on.
    g_object_set(chain.element(), "preset", "vhs", "filters", "Solarize:treshold=2", nullptr);
    EXPECT_EQ(chain(source, 2), changed(source, 0));
    EXPECT_NE(chain.message(GST_MESSAGE_WARNING).find("treshold"), std::string::npos);
    EXPECT_EQ(chain(source, 3), changed(source, 0));
    EXPECT_EQ(chain.message(GST_MESSAGE_WARNING), "");
}

TEST(GstreamerElement, PassesOnWhatItWouldNotChange) {
    Element element("vireosolarize threshold=0");
    const Bytes source = noise({}, 3);
    for (const int threshold : {0, 90, 0}) {
        g_object_set(element.element(), "threshold", threshold, nullptr);
        GstBuffer* const given = gst_buffer_ref(element.buffer(source, 0));
        GstBuffer* const result = element.push(given);
        EXPECT_EQ(given == result, threshold == 0);
        EXPECT_EQ(pixelsOf(given, {}), source);
        gst_buffer_unref(given);
        gst_buffer_unref(result);
    }
}

TEST(GstreamerElement, FollowsAController) {
    Element element("vireosolarize");
    GstControlSource* const source = gst_interpolation_control_source_new();
    g_object_set(source, "mode", GST_INTERPOLATION_MODE_NONE, nullptr);
    auto* const values = GST_TIMED_VALUE_CONTROL_SOURCE(source);
    gst_timed_value_control_source_set(values, 0, 20);
    gst_timed_value_control_source_set(values, 2 * GST_SECOND / 25, 180);
    gst_object_add_control_binding(
        GST_OBJECT(element.element()),
        gst_direct_control_binding_new_absolute(GST_OBJECT(element.element()), "threshold", source));
    gst_object_unref(source);
    Reference expected("Solarize:threshold=20@0f..hold..180@2f");
    for (int frame = 0; frame < 4; ++frame) {
        const Bytes pixels = noise({}, frame);
        EXPECT_EQ(element(pixels, frame), expected(pixels, frame)) << frame;
    }
}

TEST(GstreamerElement, ChainsAPresetAFileAndText) {
    const std::string file = testing::TempDir() + "gstreamer_look.json";
    std::ofstream(file) << Reference("Gamma Correction:gamma=15").settings();
    Element element("vireo filters=\"Horizontal Flip\" location=" + file);
    const Bytes source = noise({}, 4);
    EXPECT_EQ(element(source, 0), Reference("Gamma Correction:gamma=15; Horizontal Flip")(source, 0));
    g_object_set(element.element(), "location", nullptr, "filters", nullptr, "preset", "noir", nullptr);
    const Bytes noir = element(source, 1);
    EXPECT_FALSE(noir.empty());
    EXPECT_NE(noir, source);
    std::remove(file.c_str());
}

// Fields.

struct Fields {
    const char* caps;
    guint flags;
    int interlacing;
};

TEST(GstreamerElement, RendersTheFieldsOfInterlacedBuffers) {
    constexpr guint interlaced = GST_VIDEO_BUFFER_FLAG_INTERLACED, topFirst = GST_VIDEO_BUFFER_FLAG_TFF;
    // Bend moves with the field's time.
    const char chain[] = "Bend:horizontal rate=16; Antialias";
    const Bytes source = noise({}, 5);
    for (const Fields& fields : {
             Fields{"progressive", topFirst, 0},
             Fields{"interleaved,field-order=top-field-first", 0, 1},
             Fields{"interleaved,field-order=bottom-field-first", topFirst, 2},
             Fields{"interleaved", topFirst, 1},
             Fields{"interleaved", 0, 2},
             Fields{"mixed", 0, 0},
             Fields{"mixed", interlaced | topFirst, 1},
             Fields{"mixed", interlaced, 2},
         }) {
        Element element(std::string("vireo filters=\"") + chain + "\"", {},
                        std::string("framerate=25/1,interlace-mode=") + fields.caps);
        GstBuffer* const buffer = element.buffer(source, 3);
        GST_BUFFER_FLAG_SET(buffer, fields.flags);
        GstBuffer* const result = element.push(buffer);
        ASSERT_NE(result, nullptr);
        EXPECT_EQ(pixelsOf(result, {}), Reference(chain)(source, 3, 0, fields.interlacing))
            << fields.caps << ' ' << fields.flags;
        gst_buffer_unref(result);
    }
}

// What fails.

TEST(GstreamerElement, SaysWhyItDoesNotStart) {
    for (const auto& [element, sentence] :
         {std::pair("vireo filters=Gama", "\"Gama\""), std::pair("vireo preset=nowhere", "\"nowhere\""),
          std::pair("vireo location=/nowhere/look.json", "/nowhere/look.json")}) {
        startGstreamer();
        GstElement* const made = GST_ELEMENT(gst_object_ref_sink(gst_parse_launch(element, nullptr)));
        GstBus* const bus = gst_bus_new();
        gst_element_set_bus(made, bus);
        EXPECT_EQ(gst_element_set_state(made, GST_STATE_PAUSED), GST_STATE_CHANGE_FAILURE) << element;
        GstMessage* const message = gst_bus_pop_filtered(bus, GST_MESSAGE_ERROR);
        ASSERT_NE(message, nullptr) << element;
        GError* error = nullptr;
        gst_message_parse_error(message, &error, nullptr);
        EXPECT_NE(std::string(error->message).find(sentence), std::string::npos) << error->message;
        g_clear_error(&error);
        gst_message_unref(message);
        gst_element_set_state(made, GST_STATE_NULL);
        gst_element_set_bus(made, nullptr);
        gst_object_unref(bus);
        gst_object_unref(made);
    }
}

TEST(GstreamerElement, RefusesFramesThatTheFilterDoesNotTake) {
    const Shape wide{8192, 2};
    Element element("vireoverticalflip", wide);
    EXPECT_TRUE(element(noise(wide, 6), 0).empty());
    EXPECT_NE(element.message(GST_MESSAGE_ERROR).find("Vertical Flip takes rows of up to 32767 bytes"),
              std::string::npos);
    Element fields("vireosolarize", {}, "framerate=25/1,interlace-mode=fields");
    EXPECT_TRUE(fields(noise({}, 6), 0).empty());
}

}  // namespace
}  // namespace vireo::gstreamer
