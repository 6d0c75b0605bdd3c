// SPDX-License-Identifier: MIT
// Which frame of its clip a buffer is, and what came before it.
#include "tests/bridges/gstreamer/support/elements.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>

namespace vireo::gstreamer {
namespace {

// One filter that reads the frame's number, and one that reads frames before it.
const std::string timed = "Bend:horizontal rate=16; Ghosting";
const std::string timedElement = "vireo filters=\"" + timed + "\"";

void flush(Element& element) {
    gst_harness_push_event(element.harness(), gst_event_new_flush_start());
    gst_harness_push_event(element.harness(), gst_event_new_flush_stop(TRUE));
}

void startSegment(Element& element, std::int64_t start, std::int64_t streamTime) {
    GstSegment segment;
    gst_segment_init(&segment, GST_FORMAT_TIME);
    segment.start = segment.position = static_cast<guint64>(start) * GST_SECOND / 25;
    segment.time = static_cast<guint64>(streamTime) * GST_SECOND / 25;
    gst_harness_push_event(element.harness(), gst_event_new_segment(&segment));
}

TEST(GstreamerStream, NumbersFramesByTheirTimes) {
    Element element(timedElement);
    Reference expected(timed);
    // Also those whose stamps are late, and those that have none.
    for (int frame = 0; frame < 12; ++frame) {
        const Bytes pixels = noise({}, frame);
        GstBuffer* const buffer = element.buffer(pixels, frame);
        if (frame % 3 == 1) GST_BUFFER_PTS(buffer) += GST_SECOND / 25 * 7 / 10;
        if (frame % 3 == 2) GST_BUFFER_PTS(buffer) = GST_CLOCK_TIME_NONE;
        GstBuffer* const result = element.push(buffer);
        ASSERT_NE(result, nullptr);
        EXPECT_EQ(pixelsOf(result, {}), expected(pixels, frame)) << frame;
        gst_buffer_unref(result);
    }
}

TEST(GstreamerStream, BeginsAnewAfterAFlushAndWhereTimeJumps) {
    Element element(timedElement);
    Reference expected(timed);
    const auto expectFrames = [&](int from, int to, int number) {
        for (int frame = from; frame < to; ++frame, ++number) {
            const Bytes pixels = noise({}, frame);
            EXPECT_TRUE(element(pixels, frame) == expected(pixels, number)) << frame;
        }
    };
    expectFrames(0, 4, 0);
    // The flush ends the history although the numbers go on.
    flush(element);
    startSegment(element, 4, 4);
    expected.restart();
    expectFrames(4, 8, 4);
    // A segment that is played elsewhere in the stream.
    startSegment(element, 100, 50);
    expectFrames(100, 103, 50);
    startSegment(element, 103, 0);
    expectFrames(103, 105, 0);
}

TEST(GstreamerStream, CountsFramesOfAVaryingRate) {
    Element element("vireo filters=\"Solarize:threshold=0@0s..hold..200@1s; Bend:horizontal rate=16\"", {},
                    "framerate=0/1");
    Reference dark("Solarize:threshold=0; Bend:horizontal rate=16");
    Reference bright("Solarize:threshold=200; Bend:horizontal rate=16");
    const Bytes pixels = noise({}, 1);
    EXPECT_EQ(element(pixels, 0), dark(pixels, 0));
    EXPECT_EQ(element(pixels, 20), dark(pixels, 1));
    EXPECT_EQ(element(pixels, 26), bright(pixels, 2));
}

gboolean answerDuration(GstPad* pad, GstObject* parent, GstQuery* query) {
    if (GST_QUERY_TYPE(query) != GST_QUERY_DURATION) return gst_pad_query_default(pad, parent, query);
    gst_query_set_duration(query, GST_FORMAT_TIME, 10 * GST_SECOND / 25);
    return TRUE;
}

TEST(GstreamerStream, KnowsTheClipsLength) {
    const Bytes pixels = noise({}, 1);
    Reference expected("Horizontal Hold:offset=3,end step=400000");
    Element unknown("vireohorizontalhold offset=3 end-step=400000");
    Element given("vireohorizontalhold offset=3 end-step=400000 clip-length=10");
    const Bytes longer = expected(pixels, 5, 10);
    EXPECT_EQ(unknown(pixels, 5), expected(pixels, 5, 0));
    EXPECT_EQ(given(pixels, 5), longer);
    // Upstream may learn of it later.
    gst_pad_set_query_function(unknown.harness()->srcpad, answerDuration);
    EXPECT_EQ(unknown(pixels, 5), longer);
    EXPECT_NE(longer, expected(pixels, 5, 0));
}

TEST(GstreamerStream, DropsWhatIsLateAndAddsNoLatency) {
    Element element(timedElement);
    Reference expected(timed);
    const auto expectFrame = [&](int frame) {
        const Bytes pixels = noise({}, frame);
        EXPECT_TRUE(element(pixels, frame) == expected(pixels, frame)) << frame;
    };
    expectFrame(0);
    expectFrame(1);
    gst_harness_push_upstream_event(
        element.harness(),
        gst_event_new_qos(GST_QOS_TYPE_UNDERFLOW, 2, 4 * GST_SECOND / 25, GST_SECOND / 25));
    EXPECT_TRUE(element(noise({}, 2), 2).empty());
    EXPECT_EQ(element.message(GST_MESSAGE_QOS), "qos");
    // What was shown before still ghosts, but not over a cut.
    expected.skip(7);
    expectFrame(7);
    expectFrame(60);

    gst_harness_set_upstream_latency(element.harness(), 70 * GST_MSECOND);
    EXPECT_EQ(gst_harness_query_latency(element.harness()), 70 * GST_MSECOND);
}

// Whole pipelines.

std::string pulled(GstElement* sink, const Shape& shape, Bytes& pixels) {
    GstSample* sample = nullptr;
    g_signal_emit_by_name(sink, "pull-sample", &sample);
    if (sample == nullptr) return "nothing";
    pixels = pixelsOf(gst_sample_get_buffer(sample), shape);
    gst_sample_unref(sample);
    return {};
}

TEST(GstreamerStream, SeeksInAFile) {
    startGstreamer();
    const Shape shape{32, 10};
    constexpr int frames = 30;
    const std::string file = testing::TempDir() + "gstreamer_clip.raw";
    std::vector<Bytes> clip;
    std::ofstream stored(file, std::ios::binary);
    for (int i = 0; i < frames; ++i) {
        clip.push_back(noise(shape, i));
        stored.write(reinterpret_cast<const char*>(clip.back().data()),
                     static_cast<std::streamsize>(shape.size()));
    }
    stored.close();
    // Parsers hand out frames before the one that was asked for: nothing that looks back.
    const std::string chain = "Bend:horizontal rate=16; Horizontal Hold:end step=400000";
    const std::string text =
        "filesrc location=" + file +
        " ! rawvideoparse format=bgra width=32 height=10 framerate=25/1 ! vireo clip-length=30 filters=\"" +
        chain + "\" ! appsink name=sink sync=false";
    GstElement* const pipeline = gst_parse_launch(text.c_str(), nullptr);
    ASSERT_NE(pipeline, nullptr);
    GstElement* const sink = gst_bin_get_by_name(GST_BIN(pipeline), "sink");
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    Reference expected(chain, shape);
    int frame = 0;
    for (const int target : {0, 17, 5, 18, 0}) {
        if (frame > 0) {
            ASSERT_TRUE(gst_element_seek_simple(
                pipeline, GST_FORMAT_TIME,
                static_cast<GstSeekFlags>(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE),
                static_cast<gint64>(target) * GST_SECOND / 25));
            expected.restart();
        }
        for (frame = target; frame < target + 10; ++frame) {
            Bytes made;
            ASSERT_EQ(pulled(sink, shape, made), "") << frame;
            EXPECT_TRUE(made == expected(clip[static_cast<std::size_t>(frame)], frame, frames)) << frame;
        }
    }
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(sink);
    gst_object_unref(pipeline);
    std::remove(file.c_str());
}

#ifdef __SANITIZE_ADDRESS__
constexpr bool keepsFreedMemory = true;
#else
constexpr bool keepsFreedMemory = false;
#endif

std::int64_t residentBytes() {
    std::int64_t total = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * sysconf(_SC_PAGESIZE);
}

TEST(GstreamerStream, DoesNotGrowOverTenThousandBuffers) {
    Element element("vireo filters=\"Solarize; Ghosting\"");
    const Bytes pixels = noise({}, 1);
    std::int64_t before = 0;
    for (int frame = 0; frame < 10000; ++frame) {
        if (frame == 2000) before = residentBytes();
        if (frame % 100 == 0) {
            const std::string filters = "Ghosting; Solarize:threshold=" + std::to_string(frame % 254);
            g_object_set(element.element(), "filters", filters.c_str(), nullptr);
        }
        if (frame % 1000 == 999) {
            flush(element);
            startSegment(element, frame, frame);
        }
        ASSERT_FALSE(element(pixels, frame).empty());
    }
    // One kept frame in ten would be a megabyte.
    if (!keepsFreedMemory) {
        EXPECT_LT(residentBytes() - before, 700'000);
    }
}

}  // namespace
}  // namespace vireo::gstreamer
