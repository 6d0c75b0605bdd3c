// SPDX-License-Identifier: GPL-2.0-or-later
// The filter "Vireo" on one source.
#ifndef VIREO_OBS_FILTER_H
#define VIREO_OBS_FILTER_H

#include "bridges/obs/screen.h"
#include "bridges/obs/settings.h"
#include "bridges/obs/worker.h"

#include <obs-module.h>

#include <atomic>
#include <cstdint>
#include <optional>
#include <vector>

namespace vireo::obs {

class Filter {
public:
    Filter(obs_data_t* settings, obs_source_t* source);
    ~Filter();

    Filter(const Filter&) = delete;
    Filter& operator=(const Filter&) = delete;

    obs_source_t* source() const { return source_; }
    Statistics statistics() const { return worker_.statistics(); }

    void update(obs_data_t* settings);
    void tick();
    void render();

    /// Changes the list of filters and whatever shows it.
    void changeList(const std::vector<ListedFilter>& list);

    void nextPreset();

private:
    static void enabled(void* self, calldata_t* data);
    static void tellStatistics(void* self, calldata_t* data);
    void addHotkeys(obs_source_t* parent);
    void removeHotkeys();

    obs_source_t* source_;
    Worker worker_;
    std::optional<Screen> screen_;
    Picture picture_;
    std::atomic<bool> restarts_ = true;
    std::int64_t tick_ = 0;  ///< Since the filter was switched on.
    std::int64_t capturedTick_ = -1;
    std::int64_t firstShownTick_ = 0;  ///< What was captured before is not shown any more.
    double rate_ = 0;
    bool hasHotkeys_ = false;
    obs_hotkey_pair_id switchKeys_ = OBS_INVALID_HOTKEY_PAIR_ID;
    obs_hotkey_id presetKey_ = OBS_INVALID_HOTKEY_ID;
};

/// What OBS is told of the filter.
obs_source_info filterInfo();

}  // namespace vireo::obs

#endif
