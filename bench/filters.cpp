// SPDX-License-Identifier: MIT
// Every filter of the module, with its fresh settings unless the job's name says otherwise.
#include "bench/bench.h"
#include "bench/filter_call.h"

#include <cstring>
#include <stdexcept>

namespace bench {
namespace {

struct Setting {
    std::string parameter;
    std::int32_t value;
};

struct Job {
    std::string filter;
    std::string variant;
    std::vector<Setting> settings;
};

const Job jobs[] = {
    {"Solarize", "", {}},
    {"Levels", "gamma 1.5", {{"(RGB) Gamma", 150}}},
    {"Color Balance (RGB)", "red 300", {{"Red", 300}}},
    {"Gamma Correction", "0.7", {{"Gamma", 7}}},
    {"Color Pass", "", {}},
    {"Color Replace", "", {}},
    {"Extract", "", {}},
    {"Black & White", "", {}},
    {"Vertical Flip", "", {}},
    {"Horizontal Flip", "", {}},
    {"Edge Feather", "", {}},
    {"Ghosting", "", {}},
    {"Replicate", "2", {}},
    {"Horizontal Hold", "one pixel a row", {{"Offset", 65536}, {"End Step", 65536}}},
    {"Vertical Hold", "", {}},
    {"Antialias", "", {}},
    {"Convolution Kernel", "", {}},
    {"Camera Blur", "25 %", {}},
    {"Camera Blur", "100 %", {{"Percent Blur", 100}}},
    {"Alpha Glow", "25", {}},
    {"Bend", "both axes", {}},
    {"Camera View", "turned", {{"Longitude", 30}, {"Latitude", 20}, {"Roll", 10}, {"Distance", 50}}},
    {"Lens Distortion",
     "all five set",
     {{"Curvature", 20},
      {"Vertical Decentering", 10},
      {"Horizontal Decentering", -10},
      {"Vertical Prism FX", 5},
      {"Horizontal Prism FX", -5}}},
};

void set(const hosting::PropertyList& properties, std::span<std::uint8_t> record, const Setting& setting) {
    for (const hosting::Parameter& parameter : properties.parameters) {
        if (parameter.name != setting.parameter) continue;
        std::memcpy(record.data() + parameter.offset, &setting.value,
                    static_cast<std::size_t>(parameter.size));
        return;
    }
    throw std::runtime_error(properties.name + " has no parameter " + setting.parameter);
}

}  // namespace

void addFilters() {
    for (const Job& job : jobs) {
        for (const hosting::Filter& filter : module().filters()) {
            if (filter.properties.name != job.filter) continue;
            add(job.variant.empty() ? job.filter : job.filter + ", " + job.variant, ourselves,
                [&job, &filter](Frames& frames) -> std::function<void()> {
                    const auto call = std::make_shared<FilterCall>(filter, frames.source, frames.destination,
                                                                   frames.size.width, frames.size.height);
                    for (const Setting& setting : job.settings) {
                        set(filter.properties, call->settings(), setting);
                    }
                    return [call] { call->execute(); };
                });
        }
    }
}

}  // namespace bench
