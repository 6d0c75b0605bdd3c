// SPDX-License-Identifier: MIT
// A filter is declared once: what it stores, what it renders and how it is set up. Its entry function, which
// hosts call, follows from the declaration.
#ifndef VIREO_FRAMEWORK_FILTER_H
#define VIREO_FRAMEWORK_FILTER_H

#include "framework/dialog_launcher.h"
#include "framework/registry.h"
#include "framework/settings.h"
#include "framework/utility_services.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <type_traits>

/// The settings of a filter that has none.
struct NoSettings {};

/// What hosts see allocated as a filter's work record at Setup and InitSettings.
struct WorkRecordKind {
    std::size_t bytes = 0;       ///< 0: there is none.
    bool inContext = false;      ///< It comes from newContextHandle.
    bool withoutDialog = false;  ///< Setup allocates it although there is no dialog to hand it to.
};

struct PixelFormats {
    std::span<const std::uint32_t> codes;
    std::uint32_t behindLast = 0;  ///< What hosts see written where an index is past the last; 0: nothing.
};

struct SettingsDialog {
    std::uint16_t templateId = 0;  ///< In English; 0: there is no dialog.
    DialogProcedure* procedure = nullptr;
    bool makesSettingsHandle = false;  ///< A missing one is made, zeroed, before the dialog opens.
    bool resultIsWord = false;         ///< Hosts see the result in 16 bits, 65535 where none ran.
};

template <class Settings>
struct FilterDeclaration {
    std::uint32_t id;  ///< Of the filter, and of the resource that holds its property list.

    Settings initialSettings{};
    /// What an instance that never had settings renders with, where that is not the initial ones.
    std::optional<Settings> settingsWithoutHandle{};
    /// What InitSettings makes of stored settings, where it does not keep them.
    Settings (*renewed)(const Settings& stored) = nullptr;
    std::size_t settingsBytes = sizeof(Settings);  ///< Of the handle that is made for them.
    WorkRecordKind workRecord{};

    PixelFormats formats{};
    RememberedServices* services = nullptr;  ///< Kept up at every call where the filter uses them.

    /// Renders one frame. Gives what the host gets as the result of Execute.
    std::int32_t (*render)(const FilterInvocation& invocation, const Settings& settings);
    SettingsDialog dialog{};

    static constexpr bool hasSettings = !std::is_same_v<Settings, NoSettings>;
};

template <const auto& filter>
std::int32_t execute(const FilterInvocation& invocation) {
    if constexpr (filter.hasSettings) {
        return filter.render(
            invocation,
            settingsOr(invocation, filter.settingsWithoutHandle.value_or(filter.initialSettings)));
    } else {
        return filter.render(invocation, {});
    }
}

template <const auto& filter>
WorkRecord newWorkRecord(const FilterInvocation& invocation) {
    const MemoryFunctions& memory = *invocation.hostCallbacks->memory.get();
    const auto allocate = filter.workRecord.inContext ? memory.newContextHandle : memory.newHandle;
    return WorkRecord(invocation, allocate.get(), filter.workRecord.bytes);
}

template <const auto& filter>
std::int64_t openDialog(FilterInvocation** handle) {
    FilterInvocation& invocation = **handle;
    WorkRecord workRecord = newWorkRecord<filter>(invocation);
    if (!workRecord) return noDialog;
    const auto settings = settingsOr(invocation, filter.initialSettings);
    const DialogStart<std::remove_const_t<decltype(settings)>> start{handle, settings};
    static_assert(sizeof start <= filter.workRecord.bytes);
    if (filter.dialog.makesSettingsHandle) ensureSettingsHandle(invocation, filter.settingsBytes);
    std::memcpy(*workRecord.get(), &start, sizeof start);
    return runSettingsDialog(invocation, filter.dialog.templateId, filter.dialog.procedure, workRecord);
}

template <const auto& filter>
std::int32_t setUp(FilterInvocation** handle) {
    if constexpr (filter.dialog.templateId != 0) {
        const std::int64_t result = openDialog<filter>(handle);
        return filter.dialog.resultIsWord ? static_cast<std::uint16_t>(result)
                                          : static_cast<std::int32_t>(result);
    } else {
        if constexpr (filter.workRecord.withoutDialog) newWorkRecord<filter>(**handle);
        return 0;
    }
}

template <const auto& filter>
void storeSettings(FilterInvocation& invocation) {
    auto settings = settingsOr(invocation, filter.initialSettings);
    if constexpr (filter.renewed != nullptr) settings = filter.renewed(settings);
    if (ensureSettingsHandle(invocation, filter.settingsBytes)) {
        writeSettings(invocation.settingsHandle, settings);
    }
}

/// Settings that exist are written back, a new handle takes the initial ones. The work record is what hosts
/// have always seen allocated first; without memory for it the settings stay as they were.
template <const auto& filter>
std::int32_t initSettings(FilterInvocation& invocation) {
    if constexpr (filter.workRecord.bytes != 0) {
        const WorkRecord workRecord = newWorkRecord<filter>(invocation);
        if (workRecord) storeSettings<filter>(invocation);
    } else {
        storeSettings<filter>(invocation);
    }
    return 1;
}

/// 0 with the format of the asked index written, or 1 past the last.
template <const auto& filter>
std::int32_t namePixelFormat(FilterInvocation& invocation) {
    const PixelFormats& formats = filter.formats;
    const bool listed = invocation.pixelFormatIndex < formats.codes.size();
    if (listed) invocation.pixelFormat = formats.codes[invocation.pixelFormatIndex];
    if (!listed && formats.behindLast != 0) invocation.pixelFormat = formats.behindLast;
    return listed ? 0 : 1;
}

template <const auto& filter>
std::int32_t entry(void*, std::int16_t selector, FilterInvocation** handle) {
    constexpr std::int32_t filterFlags = 3;

    if constexpr (filter.services != nullptr) filter.services->remember(**handle);
    if (selector == FilterSelectorExecute) return execute<filter>(**handle);
    if (selector == FilterSelectorSetup) return setUp<filter>(handle);
    if constexpr (filter.hasSettings) {
        if (selector == FilterSelectorInitSettings) return initSettings<filter>(**handle);
        // Filters with a dialog have never told any flags.
        if (selector == FilterSelectorGetFilterFlags && filter.dialog.templateId == 0) return filterFlags;
    }
    if constexpr (!filter.formats.codes.empty()) {
        if (selector == FilterSelectorGetPixelFormat) return namePixelFormat<filter>(**handle);
    }
    return 0;
}

/// Announces a filter to the host. The declaration is a constant at namespace scope.
template <const auto& filter>
void registerFilter(VSK::PluginRegistry& registry) {
    registry.Add(filter.id, entry<filter>, static_cast<std::uint16_t>(filter.id));
}

#endif
