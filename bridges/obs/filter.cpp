// SPDX-License-Identifier: GPL-2.0-or-later
#include "bridges/obs/filter.h"

#include "bridges/obs/properties.h"
#include "bridges/obs/text.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <string>
#include <utility>

namespace vireo::obs {
namespace {

/// After so many seconds out of sight, the picture from before does not come back.
constexpr double longestSight = 1;

class GraphicsContext {
public:
    GraphicsContext() { obs_enter_graphics(); }
    ~GraphicsContext() { obs_leave_graphics(); }
    GraphicsContext(const GraphicsContext&) = delete;
    GraphicsContext& operator=(const GraphicsContext&) = delete;
};

double framesASecond() {
    obs_video_info video{};
    return obs_get_video_info(&video) ? static_cast<double>(video.fps_num) / video.fps_den : 0;
}

Filter& filterOf(void* data) { return *static_cast<Filter*>(data); }

bool switchTo(void* data, bool enabled, bool pressed) {
    obs_source_t* const source = filterOf(data).source();
    if (!pressed || obs_source_enabled(source) == enabled) return false;
    obs_source_set_enabled(source, enabled);
    return true;
}

void* create(obs_data_t* settings, obs_source_t* source) {
    try {
        return std::make_unique<Filter>(settings, source).release();
    } catch (const std::exception& failure) {
        blog(LOG_ERROR, "[vireo] there is no filter: %s", failure.what());
        return nullptr;
    }
}

}  // namespace

Filter::Filter(obs_data_t* settings, obs_source_t* source)
    : source_(source), worker_([source](const std::string& problem) {
          blog(LOG_WARNING, "[vireo] '%s': %s", obs_source_get_name(source), problem.c_str());
      }) {
    {
        const GraphicsContext context;
        screen_.emplace();
    }
    if (!screen_->isUsable()) blog(LOG_ERROR, "[vireo] vireo.effect is missing from the plug-in's data");
    signal_handler_connect(obs_source_get_signal_handler(source), "enable", enabled, this);
    proc_handler_add(
        obs_source_get_proc_handler(source),
        "void statistics(out int rendered, out int skipped, out float milliseconds, out string problem)",
        tellStatistics, this);
    update(settings);
}

Filter::~Filter() {
    removeHotkeys();
    signal_handler_disconnect(obs_source_get_signal_handler(source_), "enable", enabled, this);
    const GraphicsContext context;
    screen_.reset();
}

/// OBS keeps hotkeys with the source: filters have none of their own.
void Filter::addHotkeys(obs_source_t* parent) {
    const std::string own = obs_source_get_name(source_);
    const auto name = [&own](const char* action) { return std::string("Vireo.") + action + "." + own; };
    const auto text = [&own](const char* what) { return filledIn(obs_module_text(what), "{filter}", own); };
    switchKeys_ = obs_hotkey_pair_register_source(
        parent, name("On").c_str(), text("SwitchOn").c_str(), name("Off").c_str(), text("SwitchOff").c_str(),
        [](void* data, obs_hotkey_pair_id, obs_hotkey_t*, bool pressed) {
            return switchTo(data, true, pressed);
        },
        [](void* data, obs_hotkey_pair_id, obs_hotkey_t*, bool pressed) {
            return switchTo(data, false, pressed);
        },
        this, this);
    presetKey_ = obs_hotkey_register_source(
        parent, name("NextPreset").c_str(), text("NextPreset").c_str(),
        [](void* data, obs_hotkey_id, obs_hotkey_t*, bool pressed) {
            if (pressed) filterOf(data).nextPreset();
        },
        this);
    hasHotkeys_ = true;
}

void Filter::removeHotkeys() {
    if (!std::exchange(hasHotkeys_, false)) return;
    obs_hotkey_pair_unregister(switchKeys_);
    obs_hotkey_unregister(presetKey_);
}

void Filter::enabled(void* self, calldata_t* data) {
    if (calldata_bool(data, "enabled")) filterOf(self).restarts_ = true;
}

void Filter::tellStatistics(void* self, calldata_t* data) {
    const Statistics statistics = filterOf(self).statistics();
    calldata_set_int(data, "rendered", statistics.rendered);
    calldata_set_int(data, "skipped", statistics.skipped);
    calldata_set_float(data, "milliseconds", statistics.milliseconds);
    calldata_set_string(data, "problem", statistics.problem.c_str());
}

void Filter::update(obs_data_t* settings) {
    setDefaults(settings);
    worker_.setChain(ChainRequest(settings));
}

void Filter::changeList(const std::vector<ListedFilter>& list) {
    obs_data_t* const settings = obs_source_get_settings(source_);
    writeList(settings, list);
    setDefaults(settings);
    obs_data_release(settings);
    obs_source_update(source_, nullptr);
    obs_source_update_properties(source_);
}

void Filter::nextPreset() {
    const std::vector<Preset> all = presets();
    if (all.empty()) return;
    obs_data_t* const settings = obs_source_get_settings(source_);
    auto next = all.begin();
    if (std::string(obs_data_get_string(settings, key::mode)) == key::preset) {
        next = std::ranges::find(all, obs_data_get_string(settings, key::preset), &Preset::name);
        if (next == all.end() || ++next == all.end()) next = all.begin();
    }
    obs_data_set_string(settings, key::mode, key::preset);
    obs_data_set_string(settings, key::preset, next->name.c_str());
    obs_data_release(settings);
    obs_source_update(source_, nullptr);
    obs_source_update_properties(source_);
}

void Filter::tick() {
    if (!hasHotkeys_) {
        const Source parent(obs_source_get_ref(obs_filter_get_parent(source_)));
        if (parent != nullptr) addHotkeys(parent.get());
    }
    // Sources are also drawn on other threads, for screenshots.
    const GraphicsContext context;
    ++tick_;
    if (restarts_.exchange(false)) {
        tick_ = firstShownTick_ = 0;
        capturedTick_ = -1;
        rate_ = framesASecond();
        worker_.restart(rate_);
        screen_->clear();
    }
    if (screen_->read(picture_)) worker_.submit(picture_);
}

void Filter::render() {
    const Target target(source_);
    if (!target.isThere()) return;
    const std::uint32_t width = target.width(), height = target.height();
    if (width == 0 || height == 0 || !screen_->isUsable() || worker_.isEmpty()) {
        target.draw();
        return;
    }
    // A source may be drawn several times in one frame.
    if (capturedTick_ != tick_) {
        if (static_cast<double>(tick_ - capturedTick_) > longestSight * rate_) firstShownTick_ = tick_;
        capturedTick_ = tick_;
        screen_->capture(target, tick_);
    }
    if (worker_.take(picture_)) screen_->show(picture_);
    if (worker_.hasFailed()) {
        target.draw();
    } else if (screen_->isShowing() && screen_->shownTick() >= firstShownTick_) {
        screen_->draw(width, height);
    }
}

obs_source_info filterInfo() {
    obs_source_info info{};
    info.id = "vireo_filter";
    info.type = OBS_SOURCE_TYPE_FILTER;
    info.output_flags = OBS_SOURCE_VIDEO | OBS_SOURCE_CUSTOM_DRAW | OBS_SOURCE_SRGB;
    info.get_name = [](void*) { return "Vireo"; };
    info.create = create;
    info.destroy = [](void* data) { std::unique_ptr<Filter>(static_cast<Filter*>(data)).reset(); };
    info.get_defaults = setDefaults;
    info.get_properties = [](void* data) { return makeProperties(filterOf(data)); };
    info.update = [](void* data, obs_data_t* settings) { filterOf(data).update(settings); };
    info.video_tick = [](void* data, float) { filterOf(data).tick(); };
    info.video_render = [](void* data, gs_effect_t*) { filterOf(data).render(); };
    info.video_get_color_space = [](void*, std::size_t, const gs_color_space*) { return GS_CS_SRGB; };
    return info;
}

}  // namespace vireo::obs
