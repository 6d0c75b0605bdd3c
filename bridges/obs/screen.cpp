// SPDX-License-Identifier: GPL-2.0-or-later
#include "bridges/obs/screen.h"

#include <algorithm>
#include <utility>

namespace vireo::obs {
namespace {

/// Runs a drawing with OBS's choice between linear and stored colours, and puts that back.
template <class Draw>
void withColors(bool isLinear, bool encodes, Draw draw) {
    const bool wasLinear = gs_set_linear_srgb(isLinear);
    const bool encoded = gs_framebuffer_srgb_enabled();
    gs_enable_framebuffer_srgb(encodes);
    draw();
    gs_enable_framebuffer_srgb(encoded);
    gs_set_linear_srgb(wasLinear);
}

template <class Draw>
bool drawInto(gs_texrender_t* texture, std::uint32_t width, std::uint32_t height, Draw draw) {
    gs_texrender_reset(texture);
    if (!gs_texrender_begin_with_color_space(texture, width, height, GS_CS_SRGB)) return false;
    constexpr vec4 transparent{};
    gs_clear(GS_CLEAR_COLOR, &transparent, 0, 0);
    gs_ortho(0, static_cast<float>(width), 0, static_cast<float>(height), -100, 100);
    gs_blend_state_push();
    gs_blend_function(GS_BLEND_ONE, GS_BLEND_ZERO);
    draw();
    gs_blend_state_pop();
    gs_texrender_end(texture);
    return true;
}

void drawWith(gs_effect_t* effect, const char* technique, gs_texture_t* image, bool isLinear,
              std::uint32_t width, std::uint32_t height) {
    gs_eparam_t* const parameter = gs_effect_get_param_by_name(effect, "image");
    if (isLinear) {
        gs_effect_set_texture_srgb(parameter, image);
    } else {
        gs_effect_set_texture(parameter, image);
    }
    while (gs_effect_loop(effect, technique)) gs_draw_sprite(image, 0, width, height);
}

/// A source of its own; null where there is none.
Source keep(obs_source_t* source) { return Source(obs_source_get_ref(source)); }

}  // namespace

Target::Target(obs_source_t* filter)
    : parent_(keep(obs_filter_get_parent(filter))), target_(keep(obs_filter_get_target(filter))) {}

void Target::draw() const {
    const std::uint32_t flags = obs_source_get_output_flags(target_.get());
    const bool drawsItself = (flags & (OBS_SOURCE_CUSTOM_DRAW | OBS_SOURCE_ASYNC)) != 0;
    if (target_ == parent_ && !drawsItself) {
        obs_source_default_render(target_.get());
    } else {
        obs_source_video_render(target_.get());
    }
}

Screen::Screen()
    : multiplied_(gs_texrender_create(GS_BGRA, GS_ZS_NONE)),
      straight_(gs_texrender_create(GS_BGRA, GS_ZS_NONE)) {
    char* const file = obs_module_file("vireo.effect");
    if (file != nullptr) effect_.reset(gs_effect_create_from_file(file, nullptr));
    bfree(file);
}

void Screen::makeSurfaces(std::uint32_t width, std::uint32_t height) {
    for (auto& surface : surfaces_) surface.reset(gs_stagesurface_create(width, height, GS_BGRA));
    isCaptured_ = false;
}

void Screen::capture(const Target& target, std::int64_t tick) {
    const std::uint32_t width = target.width(), height = target.height();
    const bool drawn =
        drawInto(multiplied_.get(), width, height, [&] { withColors(true, false, [&] { target.draw(); }); });
    if (!drawn) return;
    const bool straightened = drawInto(straight_.get(), width, height, [&] {
        withColors(true, true, [&] {
            drawWith(effect_.get(), "Straighten", gs_texrender_get_texture(multiplied_.get()), true, width,
                     height);
        });
    });
    if (!straightened) return;
    if (surfaces_[0] == nullptr || gs_stagesurface_get_width(surfaces_[0].get()) != width ||
        gs_stagesurface_get_height(surfaces_[0].get()) != height) {
        makeSurfaces(width, height);
    }
    captured_ = 1 - captured_;
    gs_stage_texture(surfaces_[captured_].get(), gs_texrender_get_texture(straight_.get()));
    isCaptured_ = true;
    capturedTick_ = tick;
}

bool Screen::read(Picture& picture) {
    if (!std::exchange(isCaptured_, false)) return false;
    gs_stagesurf_t* const surface = surfaces_[captured_].get();
    std::uint8_t* rows = nullptr;
    std::uint32_t stride = 0;
    if (!gs_stagesurface_map(surface, &rows, &stride)) return false;
    const std::size_t width = gs_stagesurface_get_width(surface),
                      height = gs_stagesurface_get_height(surface);
    picture.width = static_cast<int>(width);
    picture.height = static_cast<int>(height);
    picture.tick = capturedTick_;
    picture.pixels.resize(4 * width * height);
    for (std::size_t y = 0; y < height; ++y) {
        std::copy_n(rows + y * stride, 4 * width, picture.pixels.data() + 4 * width * y);
    }
    gs_stagesurface_unmap(surface);
    return true;
}

void Screen::show(const Picture& picture) {
    const auto width = static_cast<std::uint32_t>(picture.width),
               height = static_cast<std::uint32_t>(picture.height);
    if (shown_ == nullptr || gs_texture_get_width(shown_.get()) != width ||
        gs_texture_get_height(shown_.get()) != height) {
        shown_.reset(gs_texture_create(width, height, GS_BGRA, 1, nullptr, GS_DYNAMIC));
    }
    if (shown_ == nullptr) return;
    gs_texture_set_image(shown_.get(), picture.pixels.data(), 4 * width, false);
    isShowing_ = true;
    shownTick_ = picture.tick;
}

void Screen::clear() { isCaptured_ = isShowing_ = false; }

void Screen::draw(std::uint32_t width, std::uint32_t height) const {
    const bool isLinear = gs_get_linear_srgb();
    gs_blend_state_push();
    gs_blend_function(GS_BLEND_ONE, GS_BLEND_INVSRCALPHA);
    withColors(isLinear, isLinear,
               [&] { drawWith(effect_.get(), "Multiply", shown_.get(), isLinear, width, height); });
    gs_blend_state_pop();
}

}  // namespace vireo::obs
