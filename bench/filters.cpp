// SPDX-License-Identifier: MIT
// Every filter of the module, with its fresh settings unless the job's name says otherwise.
#include "bench/bench.h"
#include "host/vireo_host.h"
#include "host/vrm/filter_instance.h"
#include "host/vrm/meta_plugin.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
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

const VRM::MetaPlugin& module() {
    static const VRM::MetaPlugin loaded(std::filesystem::read_symlink("/proc/self/exe").parent_path() /
                                        "VireoFiltersMetaPlugin.vrmp");
    return loaded;
}

void set(const VRM::PropertyList& properties, std::span<std::uint8_t> record, const Setting& setting) {
    for (const VRM::Parameter& parameter : properties.parameters) {
        if (parameter.name != setting.parameter) continue;
        std::memcpy(record.data() + parameter.offset, &setting.value,
                    static_cast<std::size_t>(parameter.size));
        return;
    }
    throw std::runtime_error(properties.name + " has no parameter " + setting.parameter);
}

/// Earlier frames cost nothing here: a host has them at hand.
std::int32_t frameAtHand(std::uint32_t, FrameBuffer*, const FrameRect*, void*) { return 0; }

/// What Execute is called with; the settings belong to the instance.
struct Call {
    VRM::FilterInstance instance;
    FrameBuffer source;
    FrameBuffer destination;
    TimeBase timeBase{{}, VRM::fieldDuration};
    MemoryHandle settings;
    void* settingsBytes;
    FilterInvocation invocation{};
    FilterEntryProc entry;

    Call(const VRM::Filter& filter, const Frames& frames)
        : instance(filter.entry),
          source{{0, 0, frames.size.width, frames.size.height}, frames.size.width * 4, 0, frames.source},
          destination{source.bounds, source.rowBytes, 0, frames.destination},
          entry(filter.entry) {
        settingsBytes = instance.settings().data();
        settings = &settingsBytes;
        if (settingsBytes != nullptr) invocation.settingsHandle = settings;
        invocation.sourceFrame = &source;
        invocation.destFrame = &destination;
        invocation.frameTime = 20;
        invocation.clipDuration = 100;
        invocation.getFrameCallback = frameAtHand;
        invocation.hostInstanceData = static_cast<const UtilityServices*>(vireoHostServices());
        invocation.timeBase = &timeBase;
        invocation.hostCallbacks = vireoHostCallbacks();
    }

    void execute() {
        FilterInvocation* pointer = &invocation;
        entry(nullptr, FilterSelectorExecute, &pointer);
    }
};

}  // namespace

void addFilters() {
    for (const Job& job : jobs) {
        for (const VRM::Filter& filter : module().filters()) {
            if (filter.properties.name != job.filter) continue;
            add(job.variant.empty() ? job.filter : job.filter + ", " + job.variant, ourselves,
                [&job, &filter](Frames& frames) -> std::function<void()> {
                    const auto call = std::make_shared<Call>(filter, frames);
                    for (const Setting& setting : job.settings) {
                        set(filter.properties, call->instance.settings(), setting);
                    }
                    return [call] { call->execute(); };
                });
        }
    }
}

}  // namespace bench
