// SPDX-License-Identifier: GPL-2.0-or-later
#include "tests/bridges/obs/studio.h"

#include "vireo/vireo.h"

#include <X11/Xlib.h>
#include <obs-nix-platform.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace {

/// The source whose picture is a texture of its own.
struct Still {
    std::mutex mutex;
    Image image;
    gs_texture_t* texture = nullptr;
};

Still& still() {
    static Still one;
    return one;
}

void drawStill(void*, gs_effect_t* effect) {
    const std::lock_guard lock(still().mutex);
    const Image& image = still().image;
    if (image.pixels.empty()) return;
    gs_texture_destroy(still().texture);
    const std::uint8_t* rows = image.pixels.data();
    still().texture = gs_texture_create(image.width, image.height, GS_BGRA, 1, &rows, 0);
    const bool encoded = gs_framebuffer_srgb_enabled();
    gs_enable_framebuffer_srgb(true);
    gs_effect_set_texture_srgb(gs_effect_get_param_by_name(effect, "image"), still().texture);
    gs_draw_sprite(still().texture, 0, image.width, image.height);
    gs_enable_framebuffer_srgb(encoded);
}

void registerSources() {
    obs_source_info info{};
    info.id = "test_still";
    info.type = OBS_SOURCE_TYPE_INPUT;
    info.output_flags = OBS_SOURCE_VIDEO | OBS_SOURCE_SRGB;
    info.get_name = [](void*) { return "Still"; };
    info.create = [](obs_data_t*, obs_source_t* source) -> void* { return source; };
    info.destroy = [](void*) {};
    info.get_width = [](void*) { return still().image.width; };
    info.get_height = [](void*) { return still().image.height; };
    info.video_render = drawStill;
    obs_register_source(&info);

    info.id = "test_clip";
    info.output_flags = OBS_SOURCE_ASYNC_VIDEO;
    info.get_width = info.get_height = nullptr;
    info.video_render = nullptr;
    obs_register_source(&info);
}

void outputFrame(obs_source_t* source, const Image& image) {
    obs_source_frame frame{};
    frame.data[0] = const_cast<std::uint8_t*>(image.pixels.data());
    frame.linesize[0] = 4 * image.width;
    frame.width = image.width;
    frame.height = image.height;
    frame.format = VIDEO_FORMAT_BGRA;
    frame.full_range = true;
    frame.timestamp = obs_get_video_frame_time();
    obs_source_output_video(source, &frame);
}

void require(bool condition, const char* what) {
    if (!condition) throw std::runtime_error(what);
}

}  // namespace

Image testImage(std::uint32_t width, std::uint32_t height, bool hasAlpha) {
    Image image{width, height, {}};
    std::uint32_t random = 1;
    for (std::uint32_t i = 0; i < 4 * width * height; ++i) {
        random = random * 1664525 + 1013904223;
        const bool isAlpha = i % 4 == 3;
        image.pixels.push_back(isAlpha && !hasAlpha ? 255 : static_cast<std::uint8_t>(random >> 24));
    }
    return image;
}

Image rendered(const Image& image, const std::string& text) {
    static VireoEngine* const engine = [] {
        VireoEngine* opened = nullptr;
        require(vireoOpen(nullptr, &opened) == VireoDone, "there is no engine");
        return opened;
    }();
    VireoChain* chain = nullptr;
    require(vireoChainNew(engine, &chain) == VireoDone && vireoChainAddText(chain, text.c_str()) == VireoDone,
            "there is no chain");
    Image result = image;
    VireoFrame frame{};
    frame.structSize = sizeof frame;
    frame.width = static_cast<int>(image.width);
    frame.height = static_cast<int>(image.height);
    frame.pixels = result.pixels.data();
    frame.stride = 4 * frame.width;
    require(vireoChainRender(chain, &frame, &frame, nullptr, nullptr) == VireoDone,
            "the chain does not render");
    vireoChainClose(chain);
    return result;
}

Studio::Studio() {
    obs_set_nix_platform(OBS_NIX_PLATFORM_X11_EGL);
    obs_set_nix_platform_display(XOpenDisplay(nullptr));
    require(obs_startup("de-DE", nullptr, nullptr), "libobs does not start");
    obs_video_info video{};
    video.graphics_module = "libobs-opengl";
    video.fps_num = framesASecond;
    video.fps_den = 1;
    video.base_width = video.output_width = 320;
    video.base_height = video.output_height = 180;
    video.output_format = VIDEO_FORMAT_RGBA;
    require(obs_reset_video(&video) == OBS_VIDEO_SUCCESS, "libobs has no graphics");
    const obs_audio_info audio{48000, SPEAKERS_STEREO};
    require(obs_reset_audio(&audio), "libobs has no audio");

    obs_module_t* module = nullptr;
    require(obs_open_module(&module, VIREO_TESTED_PLUGIN "/bin/64bit/vireo.so",
                            VIREO_TESTED_PLUGIN "/data") == MODULE_SUCCESS &&
                obs_init_module(module),
            "the plug-in does not load");
    obs_hotkey_enable_callback_rerouting(true);
    registerSources();
}

Studio::~Studio() {
    obs_set_output_source(0, nullptr);
    filter_.reset();
    source_.reset();
    obs_enter_graphics();
    gs_texture_destroy(still().texture);
    still().texture = nullptr;
    obs_leave_graphics();
    obs_shutdown();
}

void Studio::show(const Image& image, bool isAsynchronous) {
    obs_set_output_source(0, nullptr);
    filter_.reset();
    source_.reset(obs_source_create(isAsynchronous ? "test_clip" : "test_still", "source", nullptr, nullptr));
    change(image);
    obs_set_output_source(0, source_.get());
}

void Studio::change(const Image& image) {
    if (std::strcmp(obs_source_get_id(source_.get()), "test_clip") == 0) {
        outputFrame(source_.get(), image);
    } else {
        const std::lock_guard lock(still().mutex);
        still().image = image;
    }
}

obs_source_t* Studio::addFilter(const std::string& settings) {
    const Data data(obs_data_create_from_json(settings.c_str()));
    require(data != nullptr, "the settings are no JSON");
    filter_.reset(obs_source_create("vireo_filter", "filter", data.get(), nullptr));
    obs_source_filter_add(source_.get(), filter_.get());
    return filter_.get();
}

void Studio::removeFilter() {
    obs_source_filter_remove(source_.get(), filter_.get());
    filter_.reset();
}

Image Studio::seen() const {
    Image image{obs_source_get_width(source_.get()), obs_source_get_height(source_.get()), {}};
    if (image.width == 0 || image.height == 0) return image;
    obs_enter_graphics();
    gs_texrender_t* const texture = gs_texrender_create(GS_BGRA, GS_ZS_NONE);
    gs_stagesurf_t* const surface = gs_stagesurface_create(image.width, image.height, GS_BGRA);
    if (gs_texrender_begin(texture, image.width, image.height)) {
        constexpr vec4 nothing{};
        gs_clear(GS_CLEAR_COLOR, &nothing, 0, 0);
        gs_ortho(0, static_cast<float>(image.width), 0, static_cast<float>(image.height), -100, 100);
        gs_blend_state_push();
        gs_blend_function(GS_BLEND_ONE, GS_BLEND_ZERO);
        const bool wasLinear = gs_set_linear_srgb(true);
        obs_source_video_render(source_.get());
        gs_set_linear_srgb(wasLinear);
        gs_blend_state_pop();
        gs_texrender_end(texture);
        gs_stage_texture(surface, gs_texrender_get_texture(texture));
    }
    std::uint8_t* rows = nullptr;
    std::uint32_t stride = 0;
    if (gs_stagesurface_map(surface, &rows, &stride)) {
        for (std::uint32_t y = 0; y < image.height; ++y, rows += stride) {
            image.pixels.insert(image.pixels.end(), rows, rows + 4 * image.width);
        }
        gs_stagesurface_unmap(surface);
    }
    gs_stagesurface_destroy(surface);
    gs_texrender_destroy(texture);
    obs_leave_graphics();
    return image;
}

bool Studio::becomes(const Image& image, int seconds) const {
    return becomes([&](const Image& seen) { return seen == image; }, seconds);
}

bool Studio::becomes(const std::function<bool(const Image&)>& isSo, int seconds) const {
    for (int i = 0; i < seconds * framesASecond; ++i) {
        if (isSo(seen())) return true;
        wait(1);
    }
    return false;
}

long long Studio::statistic(const char* name) const {
    calldata_t data{};
    proc_handler_call(obs_source_get_proc_handler(filter_.get()), "statistics", &data);
    const long long value = calldata_int(&data, name);
    calldata_free(&data);
    return value;
}

std::string Studio::problem() const {
    calldata_t data{};
    proc_handler_call(obs_source_get_proc_handler(filter_.get()), "statistics", &data);
    std::string text = calldata_string(&data, "problem");
    calldata_free(&data);
    return text;
}

void Studio::wait(int frames) {
    const std::uint32_t until = obs_get_total_frames() + static_cast<std::uint32_t>(frames);
    while (obs_get_total_frames() < until) std::this_thread::sleep_for(std::chrono::milliseconds(2));
}
