// SPDX-License-Identifier: GPL-2.0-or-later
#include "bridges/frei0r/module.h"

#include "host/vrm/filter_instance.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <random>
#include <stdexcept>
#include <string_view>

namespace frei0r {
namespace {

/// Filters whose picture changes with the frame's number or the clip's length; lists do not tell.
constexpr std::string_view timedFilters[] = {"QULN Bend", "QULN Ghosting", "QULN Horizontal Hold",
                                             "QULN Vertical Hold"};

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

/// A few filters step in ways that only rows from the bottom serve; a small picture tells.
bool takesRowsFromTheTop(const VRM::FilterInstance& instance) {
    ProbePixels source;
    std::minstd_rand random(1);
    std::generate(source.begin(), source.end(), random);
    ProbePixels fromTop{};
    ProbePixels fromBottom{};
    for (const bool top : {true, false}) {
        FrameBuffer sourceBuffer = probeBuffer(source, top);
        FrameBuffer destination = probeBuffer(top ? fromTop : fromBottom, top);
        instance.render({.source = &sourceBuffer, .destination = &destination, .time = 6, .duration = 20});
        turnOver(source);
    }
    turnOver(fromBottom);
    return fromTop == fromBottom;
}

int probedLookBack(const VRM::FilterInstance& instance) {
    constexpr std::uint32_t late = 1000;
    ProbePixels source{};
    ProbePixels result{};
    FrameBuffer sourceBuffer = probeBuffer(source, false);
    FrameBuffer destination = probeBuffer(result, false);
    std::uint32_t earliest = late;
    instance.render({.source = &sourceBuffer,
                     .destination = &destination,
                     .time = late,
                     .duration = 2 * late,
                     .getFrame =
                         [](std::uint32_t time, FrameBuffer*, const FrameRect*, void* data) {
                             auto& seen = *static_cast<std::uint32_t*>(data);
                             seen = std::min(seen, time);
                             return std::int32_t{0};
                         },
                     .getFrameData = &earliest});
    return static_cast<int>((late - earliest + 1) / 2);
}

}  // namespace

Effect loadEffect(std::uint32_t filterId) {
    auto module = VRM::MetaPlugin::shared(modulePath());
    const auto& filters = module->filters();
    const auto filter = std::ranges::find(filters, filterId, &VRM::Filter::id);
    if (filter == filters.end()) {
        throw std::runtime_error("the module has no filter " + std::to_string(filterId));
    }
    const VRM::FilterInstance instance(filter->entry);
    return {module, &*filter, takesRowsFromTheTop(instance), probedLookBack(instance),
            std::ranges::count(timedFilters, filter->properties.matchName) != 0};
}

}  // namespace frei0r
