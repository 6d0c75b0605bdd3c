// SPDX-License-Identifier: GPL-2.0-or-later
// What a filter's settings in OBS ask for. These keys are what scripts and obs-websocket write:
//   "mode"     "filters", "preset", "file" or "text"
//   "filters"  an array of {"value": "Solarize"}; the values of the first are "1.Solarize.Threshold" and so
//   on,
//              in the units that the controls show
//   "preset"   a preset's name
//   "file"     the path of a settings file or of a Levels file
//   "text"     a chain as the command line's -f takes it
#ifndef VIREO_OBS_SETTINGS_H
#define VIREO_OBS_SETTINGS_H

#include "bridges/obs/engine.h"

#include <obs-module.h>

#include <cstdint>
#include <string>
#include <vector>

namespace vireo::obs {

namespace key {
inline constexpr const char* mode = "mode";
inline constexpr const char* filters = "filters";
inline constexpr const char* preset = "preset";
inline constexpr const char* file = "file";
inline constexpr const char* text = "text";
}  // namespace key

/// A filter of the list, with its values in stored units.
struct ListedFilter {
    std::uint32_t filter;
    std::vector<std::int64_t> values;
};

/// Where the settings hold a value of the filter at a position from 0.
std::string valueKey(std::size_t position, const VireoFilter& filter, const VireoParameter& parameter);

/// Whether people see other numbers than the stored ones.
bool isScaled(const VireoParameter& parameter);
double displayStep(const VireoParameter& parameter);

/// Throws std::runtime_error with the engine's sentence where the list names an unknown filter.
std::vector<ListedFilter> readList(obs_data_t* settings);
void writeList(obs_data_t* settings, const std::vector<ListedFilter>& list);

ListedFilter freshFilter(std::uint32_t filter);

/// Gives the list's filters their start values where the settings have none, and the mode its own.
void setDefaults(obs_data_t* settings);

/// What the settings ask for, to be made a chain of on another thread.
class ChainRequest {
public:
    ChainRequest() = default;
    explicit ChainRequest(obs_data_t* settings);

    /// Adds everything to an empty chain. Empty where that went well, else the sentence.
    std::string addTo(VireoChain* chain) const;

private:
    std::string mode_;
    std::string content_;
    std::vector<ListedFilter> list_;
    std::string problem_;
};

}  // namespace vireo::obs

#endif
