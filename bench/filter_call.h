// SPDX-License-Identifier: MIT
#ifndef VIREO_BENCH_FILTER_CALL_H
#define VIREO_BENCH_FILTER_CALL_H

#include "host/hosting/filter_instance.h"
#include "host/hosting/meta_plugin.h"
#include "host/vireo_host.h"

#include <cstdint>
#include <filesystem>
#include <span>

namespace bench {

/// The module that lies beside the program.
inline const hosting::MetaPlugin& module() {
    static const auto loaded = hosting::MetaPlugin::shared(
        std::filesystem::read_symlink("/proc/self/exe").parent_path() / "VireoFiltersMetaPlugin.vrmp");
    return *loaded;
}

/// A filter's Execute and nothing around it, over two frames without padding.
class FilterCall {
public:
    FilterCall(const hosting::Filter& filter, std::uint8_t* source, std::uint8_t* destination, int width,
               int height)
        : instance_(filter.entry),
          source_{{0, 0, width, height}, width * 4, 0, source},
          destination_{source_.bounds, source_.rowBytes, 0, destination},
          entry_(filter.entry) {
        settingsBytes_ = instance_.settings().data();
        settings_ = &settingsBytes_;
        if (settingsBytes_ != nullptr) invocation_.settingsHandle = settings_;
        invocation_.sourceFrame = &source_;
        invocation_.destFrame = &destination_;
        invocation_.frameTime = 20;
        invocation_.clipDuration = 100;
        invocation_.getFrameCallback = frameAtHand;
        invocation_.hostInstanceData = static_cast<const UtilityServices*>(vireoHostServices());
        invocation_.timeBase = &timeBase_;
        invocation_.hostCallbacks = vireoHostCallbacks();
    }
    FilterCall(const FilterCall&) = delete;
    FilterCall& operator=(const FilterCall&) = delete;

    std::span<std::uint8_t> settings() { return instance_.settings(); }

    void execute() {
        FilterInvocation* pointer = &invocation_;
        entry_(nullptr, FilterSelectorExecute, &pointer);
    }

private:
    /// Earlier frames cost nothing here: a host has them at hand.
    static std::int32_t frameAtHand(std::uint32_t, FrameBuffer*, const FrameRect*, void*) { return 0; }

    hosting::FilterInstance instance_;
    FrameBuffer source_;
    FrameBuffer destination_;
    TimeBase timeBase_{{}, hosting::fieldDuration};
    MemoryHandle settings_;
    void* settingsBytes_;
    FilterInvocation invocation_{};
    FilterEntryProc entry_;
};

}  // namespace bench

#endif
