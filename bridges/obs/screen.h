// SPDX-License-Identifier: GPL-2.0-or-later
// A filter's textures: the source's picture on its way to memory, and the finished one on its way back. All
// calls are made inside the graphics context.
#ifndef VIREO_OBS_SCREEN_H
#define VIREO_OBS_SCREEN_H

#include "bridges/obs/worker.h"

#include <obs-module.h>

#include <array>
#include <cstdint>
#include <memory>

namespace vireo::obs {

struct Release {
    void operator()(obs_source_t* source) const { obs_source_release(source); }
};
using Source = std::unique_ptr<obs_source_t, Release>;

/// What a filter is put on: its source, or another filter of that. OBS forgets both as soon as the filter is
/// taken off, which may happen on another thread while it is drawn.
class Target {
public:
    explicit Target(obs_source_t* filter);

    bool isThere() const { return parent_ != nullptr && target_ != nullptr; }
    std::uint32_t width() const { return obs_source_get_base_width(target_.get()); }
    std::uint32_t height() const { return obs_source_get_base_height(target_.get()); }

    /// As it is where there is no filter.
    void draw() const;

private:
    Source parent_;
    Source target_;
};

struct Destroy {
    void operator()(gs_effect_t* effect) const { gs_effect_destroy(effect); }
    void operator()(gs_texrender_t* texrender) const { gs_texrender_destroy(texrender); }
    void operator()(gs_stagesurf_t* surface) const { gs_stagesurface_destroy(surface); }
    void operator()(gs_texture_t* texture) const { gs_texture_destroy(texture); }
};

template <class Resource>
using Graphics = std::unique_ptr<Resource, Destroy>;

class Screen {
public:
    Screen();

    /// Without the effect, which is one of the plug-in's files, nothing is drawn.
    bool isUsable() const { return effect_ != nullptr; }

    /// Draws a target and has it copied to memory, which may take the graphics card a frame.
    void capture(const Target& target, std::int64_t tick);

    /// What was captured last, once.
    bool read(Picture& picture);

    /// The picture to be drawn from now on.
    void show(const Picture& picture);

    /// Nothing is captured or shown any longer.
    void clear();

    bool isShowing() const { return isShowing_; }
    std::int64_t shownTick() const { return shownTick_; }

    void draw(std::uint32_t width, std::uint32_t height) const;

private:
    void makeSurfaces(std::uint32_t width, std::uint32_t height);

    Graphics<gs_effect_t> effect_;
    Graphics<gs_texrender_t> multiplied_;
    Graphics<gs_texrender_t> straight_;
    std::array<Graphics<gs_stagesurf_t>, 2> surfaces_;
    std::size_t captured_ = 0;  ///< The surface that was written last.
    bool isCaptured_ = false;
    std::int64_t capturedTick_ = 0;
    Graphics<gs_texture_t> shown_;
    bool isShowing_ = false;
    std::int64_t shownTick_ = 0;
};

}  // namespace vireo::obs

#endif
