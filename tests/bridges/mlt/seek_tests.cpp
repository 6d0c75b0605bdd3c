// SPDX-License-Identifier: MIT
// Frames of the services, asked for in any order and on any thread, beside what the engine renders.
#include <framework/mlt.h>
#include <gtest/gtest.h>
#include <vireo/vireo.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <functional>
#include <memory>
#include <random>
#include <thread>

namespace {

using Picture = std::vector<std::uint8_t>;
using Clip = std::vector<Picture>;

constexpr int width = 33;
constexpr int height = 21;
constexpr int frames = 24;

Clip randomClip() {
    std::mt19937 random(1);
    Clip clip(frames, Picture(4 * width * height));
    for (Picture& picture : clip) std::generate(picture.begin(), picture.end(), std::ref(random));
    return clip;
}

const Clip source = randomClip();

void require(VireoStatus status) {
    if (status != VireoDone) throw std::runtime_error(vireoLastError()->sentence);
}

VireoFrame frameOver(Picture& pixels) {
    VireoFrame frame{.structSize = sizeof frame};
    frame.width = width;
    frame.height = height;
    frame.layout = VireoRgba;
    frame.pixels = pixels.data();
    frame.stride = 4 * width;
    return frame;
}

/// What a chain makes of the frames from `first` on, as a clip of their own.
Clip expected(const char* text, int first = 0) {
    VireoEngine* engine = nullptr;
    VireoChain* chain = nullptr;
    VireoStream* stream = nullptr;
    require(vireoOpen(nullptr, &engine));
    require(vireoChainNew(engine, &chain));
    require(vireoChainAddText(chain, text));
    require(vireoStreamNew(chain, &stream));
    Clip clip(source.begin() + first, source.end());
    for (std::size_t i = 0; i < clip.size(); ++i) {
        VireoFrame frame = frameOver(clip[i]);
        const VireoTime time{sizeof time, 0, static_cast<std::int64_t>(i), std::int64_t(clip.size()), 25, -1};
        require(vireoStreamRender(stream, &frame, &frame, &time));
    }
    vireoStreamClose(stream);
    vireoChainClose(chain);
    vireoClose(engine);
    return clip;
}

int giveImage(mlt_frame frame, std::uint8_t** image, mlt_image_format* format, int* wide, int* high, int) {
    const Picture& picture =
        source.at(static_cast<std::size_t>(mlt_properties_get_int(MLT_FRAME_PROPERTIES(frame), "number")));
    const int size = static_cast<int>(picture.size());
    *image = static_cast<std::uint8_t*>(mlt_pool_alloc(size));
    std::copy(picture.begin(), picture.end(), *image);
    mlt_frame_set_image(frame, *image, size, mlt_pool_release);
    *format = mlt_image_rgba;
    *wide = width;
    *high = height;
    return 0;
}

int giveFrame(mlt_producer producer, mlt_frame_ptr frame, int) {
    *frame = mlt_frame_init(MLT_PRODUCER_SERVICE(producer));
    const mlt_position position = mlt_producer_position(producer);
    mlt_frame_set_position(*frame, position);
    mlt_properties_set_int(MLT_FRAME_PROPERTIES(*frame), "number",
                           std::min(frames - 1, mlt_producer_frame(producer)));
    mlt_frame_push_get_image(*frame, giveImage);
    mlt_producer_prepare_next(producer);
    return 0;
}

template <class Handle, void (*close)(Handle)>
struct Closer {
    void operator()(Handle handle) const { close(handle); }
};
template <class Handle, void (*close)(Handle)>
using Owned = std::unique_ptr<std::remove_pointer_t<Handle>, Closer<Handle, close>>;
using OwnedProducer = Owned<mlt_producer, mlt_producer_close>;
using OwnedFrame = Owned<mlt_frame, mlt_frame_close>;

class Mlt : public testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_NE(mlt_factory_init(VIREO_TESTED_REPOSITORY), nullptr); }
    static void TearDownTestSuite() { mlt_factory_close(); }

    mlt_filter attach(mlt_service service, const char* name, const char* argument = nullptr) {
        mlt_filter filter = mlt_factory_filter(profile_.get(), name, argument);
        EXPECT_NE(filter, nullptr) << name;
        mlt_service_attach(service, filter);
        mlt_filter_close(filter);
        return filter;
    }

    mlt_producer clip() { return clip_.get(); }
    mlt_service clipService() { return MLT_PRODUCER_SERVICE(clip()); }

    static OwnedFrame frameAt(mlt_producer producer, int position) {
        mlt_producer_seek(producer, position);
        mlt_frame frame = nullptr;
        mlt_service_get_frame(MLT_PRODUCER_SERVICE(producer), &frame, 0);
        return OwnedFrame(frame);
    }

    static Picture imageOf(mlt_frame frame) {
        std::uint8_t* image = nullptr;
        mlt_image_format format = mlt_image_rgba;
        int wide = width, high = height;
        if (mlt_frame_get_image(frame, &image, &format, &wide, &high, 0) != 0 || wide != width) return {};
        return Picture(image, image + 4 * width * height);
    }

    static void expectFrames(mlt_producer producer, const Clip& wanted, const std::vector<int>& positions) {
        for (const int position : positions) {
            EXPECT_TRUE(imageOf(frameAt(producer, position).get()) ==
                        wanted.at(static_cast<std::size_t>(position)))
                << position;
        }
    }

    Owned<mlt_profile, mlt_profile_close> profile_{[] {
        mlt_profile profile = mlt_profile_init("dv_pal");
        profile->width = width;
        profile->height = height;
        profile->progressive = 1;
        return profile;
    }()};
    OwnedProducer clip_{[this] {
        mlt_producer producer = mlt_producer_new(profile_.get());
        producer->get_frame = giveFrame;
        producer->close = [](void* closed) {
            auto* self = static_cast<mlt_producer>(closed);
            self->close = nullptr;
            mlt_producer_close(self);
            std::free(self);
        };
        mlt_properties_set_int(MLT_PRODUCER_PROPERTIES(producer), "length", frames);
        mlt_producer_set_in_and_out(producer, 0, frames - 1);
        return producer;
    }()};
};

const std::vector<int> toAndFro = {0, 1, 2, 3, 12, 13, 12, 11, 10, 11, 11, 20, 4, 5, 0, 9};

TEST_F(Mlt, ShowsAFrameAlikeWheneverItIsAskedFor) {
    const struct {
        const char* service;
        const char* chain;
    } timed[] = {{"vireo.bend", "Bend"},
                 {"vireo.ghosting", "Ghosting"},
                 {"vireo.horizontal-hold", "Horizontal Hold"},
                 {"vireo.vertical-hold", "Vertical Hold"}};
    for (const auto& [service, chain] : timed) {
        SCOPED_TRACE(service);
        mlt_filter filter = attach(clipService(), service);
        expectFrames(clip(), expected(chain), toAndFro);
        mlt_service_detach(clipService(), filter);
    }
}

TEST_F(Mlt, LooksBackAtWhatFiltersBeforeItMade) {
    mlt_filter before = attach(clipService(), "vireo.solarize");
    mlt_properties_set(MLT_FILTER_PROPERTIES(before), "Threshold", "0=10;20=200");
    attach(clipService(), "vireo", "Ghosting; Replicate");
    attach(clipService(), "vireo.ghosting");
    expectFrames(clip(), expected("Solarize:threshold=10@0f..200@20f; Ghosting; Replicate; Ghosting"),
                 toAndFro);

    // What is changed while a frame stands still shows in all that it is made of.
    mlt_properties_set(MLT_FILTER_PROPERTIES(before), "Threshold", "33");
    expectFrames(clip(), expected("Solarize:threshold=33; Ghosting; Replicate; Ghosting"), {9, 9, 10});
}

TEST_F(Mlt, LooksBackInCutsPlaylistsAndTractors) {
    const Clip whole = expected("Ghosting");
    const OwnedProducer cut(mlt_producer_cut(clip(), 10, frames - 1));
    attach(MLT_PRODUCER_SERVICE(cut.get()), "vireo.ghosting");
    const Clip part = expected("Ghosting", 10);
    expectFrames(cut.get(), part, {0, 1, 9, 3, 4, 13});

    const Owned<mlt_playlist, mlt_playlist_close> playlist(mlt_playlist_new(profile_.get()));
    mlt_playlist_append(playlist.get(), clip());
    attach(MLT_PLAYLIST_SERVICE(playlist.get()), "vireo.ghosting");
    expectFrames(MLT_PLAYLIST_PRODUCER(playlist.get()), whole, toAndFro);

    // On a track between others, and over all tracks.
    for (const bool planted : {true, false}) {
        SCOPED_TRACE(planted);
        const Owned<mlt_tractor, mlt_tractor_close> tractor(mlt_tractor_new());
        mlt_service_set_profile(MLT_TRACTOR_SERVICE(tractor.get()), profile_.get());
        mlt_tractor_set_track(tractor.get(), clip(), 0);
        if (planted) {
            mlt_filter filter = mlt_factory_filter(profile_.get(), "vireo.ghosting", nullptr);
            mlt_field_plant_filter(mlt_tractor_field(tractor.get()), filter, 0);
            mlt_filter_close(filter);
        } else {
            attach(MLT_TRACTOR_SERVICE(tractor.get()), "vireo.ghosting");
        }
        expectFrames(MLT_TRACTOR_PRODUCER(tractor.get()), whole, toAndFro);
    }
}

TEST_F(Mlt, RendersFramesOnSeveralThreadsAtOnce) {
    attach(clipService(), "vireo", "Bend; Ghosting; Camera Blur");
    const Clip wanted = expected("Bend; Ghosting; Camera Blur");
    std::vector<OwnedFrame> under;
    for (int i = 0; i < frames; ++i) under.push_back(frameAt(clip(), i));
    std::atomic<int> next{0}, wrong{0};
    {
        std::vector<std::jthread> workers;
        for (int worker = 0; worker < 3; ++worker) {
            workers.emplace_back([&] {
                for (int i; (i = next++) < frames;) {
                    // Not quite in their order.
                    const auto number = static_cast<std::size_t>(i ^ 1);
                    under[number]->is_processing = 1;
                    if (imageOf(under[number].get()) != wanted[number]) ++wrong;
                }
            });
        }
    }
    EXPECT_EQ(wrong, 0);
}

}  // namespace
