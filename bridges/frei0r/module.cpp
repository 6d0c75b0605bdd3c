// SPDX-License-Identifier: GPL-2.0-or-later
#include "bridges/frei0r/module.h"

#include "host/vrm/filter_probe.h"
#include "host/vrm/parameter_value.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>

namespace frei0r {
namespace {

std::filesystem::path pluginFolder() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&loadEffect), &info) == 0 || info.dli_fname == nullptr) {
        throw std::runtime_error("the plug-in does not find its own folder");
    }
    return std::filesystem::weakly_canonical(info.dli_fname).parent_path();
}

std::filesystem::path modulePath() {
    const std::filesystem::path folder = pluginFolder();
    for (const char* place : {".", "../vireo", "../bin"}) {
        const auto candidate = folder / place / "VireoFiltersMetaPlugin.vrmp";
        if (std::filesystem::exists(candidate)) return std::filesystem::weakly_canonical(candidate);
    }
    throw std::runtime_error("there is no VireoFiltersMetaPlugin.vrmp near " + folder.string());
}

constexpr int probeWidth = 37;
constexpr int probeHeight = 23;
using ProbePixels = std::array<std::uint32_t, probeWidth * probeHeight>;

FrameBuffer probeBuffer(ProbePixels& pixels, bool fromTheTop) {
    constexpr std::int32_t rowBytes = probeWidth * 4;
    std::uint32_t* first = fromTheTop ? pixels.data() + probeWidth * (probeHeight - 1) : pixels.data();
    return {{0, 0, probeWidth, probeHeight}, fromTheTop ? -rowBytes : rowBytes, 0, first};
}

void turnOver(ProbePixels& pixels) {
    for (int y = 0; y < probeHeight / 2; ++y) {
        std::swap_ranges(pixels.begin() + y * probeWidth, pixels.begin() + (y + 1) * probeWidth,
                         pixels.begin() + (probeHeight - 1 - y) * probeWidth);
    }
}

void fillAtRandom(ProbePixels& pixels, std::minstd_rand& random) {
    for (std::uint32_t& pixel : pixels) {
        pixel = static_cast<std::uint32_t>(random()) << 16 ^ static_cast<std::uint32_t>(random());
    }
}

void setAtRandom(const VRM::Filter& filter, const VRM::FilterInstance& instance, std::minstd_rand& random) {
    for (const VRM::Parameter& parameter : filter.properties.parameters) {
        const bool color = parameter.kind == VRM::ParameterKind::Color;
        const bool number = parameter.kind == VRM::ParameterKind::Number;
        const double least = number ? parameter.minimum : 0;
        const double most = number ? parameter.maximum : color ? 0xFFFFFF : 1;
        std::uniform_real_distribution<double> values(least, most);
        writeValue(parameter, static_cast<std::int64_t>(values(random)), instance.settings());
    }
}

/// What the filter makes of a picture whose rows lie from the top or from the bottom, rows from the top.
ProbePixels probePicture(const VRM::FilterInstance& instance, ProbePixels source, bool fromTheTop) {
    ProbePixels result{};
    if (!fromTheTop) turnOver(source);
    FrameBuffer sourceBuffer = probeBuffer(source, fromTheTop);
    FrameBuffer destination = probeBuffer(result, fromTheTop);
    instance.render({.source = &sourceBuffer, .destination = &destination, .time = 6, .duration = 20});
    if (!fromTheTop) turnOver(result);
    return result;
}

/// A few filters step in ways that only rows from the bottom serve. A small picture tells, under the filter's
/// own settings and some others, since many do little at first.
bool takesRowsFromTheTop(const VRM::Filter& filter) {
    constexpr int rounds = 8;
    const VRM::FilterInstance instance = VRM::newInstance(filter);
    std::minstd_rand random(1);
    for (int round = 0; round < rounds; ++round) {
        ProbePixels source;
        fillAtRandom(source, random);
        if (probePicture(instance, source, true) != probePicture(instance, source, false)) return false;
        setAtRandom(filter, instance, random);
    }
    return true;
}

}  // namespace

Effect loadEffect(std::uint32_t filterId) {
    auto module = VRM::MetaPlugin::shared(modulePath());
    const auto& filters = module->filters();
    const auto filter = std::ranges::find(filters, filterId, &VRM::Filter::id);
    if (filter == filters.end()) {
        throw std::runtime_error("the module has no filter " + std::to_string(filterId));
    }
    return {module, &*filter, takesRowsFromTheTop(*filter), VRM::lookBack(VRM::newInstance(*filter)),
            VRM::readsTime(filter->properties)};
}

}  // namespace frei0r
