// SPDX-License-Identifier: MIT
// The one function that the module exports: it lets a host enumerate the filters and fetch their property
// lists.
#include "framework/module_resources.h"
#include "framework/registration_order.h"
#include "framework/registry.h"
#include "host/vrm/vrm.h"

#include <cstring>
#include <string>
#include <string_view>

namespace {

std::vector<FilterEntryRecord> entries;

class VireoFilterRegistry final : public VSK::PluginRegistry {
public:
    void Add(std::uint32_t id, FilterEntryProc entry, std::uint16_t piplId) override {
        appendEntry(entries, {videoFilterKind, id, entry, piplId});
    }
};

/// The two editions of the application that offer every filter.
constexpr bool isFullApplication(std::int32_t type) { return type == 5 || type == 8; }

/// The record tells the host's language, which nothing here depends on.
std::int32_t initialise() {
    VireoFilterRegistry registry;
#define VIREO_REGISTER_FILTER(filter) filter::Register(registry);
    VIREO_FILTERS_FOR_ALL(VIREO_REGISTER_FILTER)
    if (isFullApplication(VRM::GetApplicationType())) {
        VIREO_FILTERS_FOR_FULL_APPLICATIONS(VIREO_REGISTER_FILTER)
    }
#undef VIREO_REGISTER_FILTER
    return MetaPluginDone;
}

std::int32_t terminate() {
    entries.clear();
    return MetaPluginDone;
}

std::int32_t count(MetaPluginCountRecord& record) {
    record.count = static_cast<std::int32_t>(entries.size());
    return MetaPluginDone;
}

std::int32_t entryInformation(MetaPluginEntryRecord& record) {
    if (record.index >= entries.size()) return MetaPluginBadArgument;
    const FilterEntryRecord& entry = entries[record.index];
    record.kind = entry.kind;
    record.id = entry.id;
    record.entry = entry.entry;
    return MetaPluginDone;
}

std::int32_t propertyList(MetaPluginPropertyListRecord& record) {
    constexpr std::size_t headerBytes = 2;
    constexpr std::string_view typeName = "PiPL";

    if (record.index >= entries.size()) return MetaPluginBadArgument;
    const std::u16string wideTypeName(typeName.begin(), typeName.end());
    std::size_t resourceSize = 0;
    const void* resource =
        LoadModuleResource(wideTypeName.c_str(), entries[record.index].piplId, &resourceSize);
    if (resource == nullptr || resourceSize < headerBytes) return MetaPluginNoPropertyList;

    const auto size = static_cast<std::int32_t>(resourceSize - headerBytes);
    if (record.buffer != nullptr) {
        if (record.size < size) return MetaPluginBadArgument;
        std::memcpy(record.buffer, static_cast<const char*>(resource) + headerBytes,
                    static_cast<std::size_t>(size));
    }
    record.size = size;
    ReleaseModuleResource(resource);
    return MetaPluginDone;
}

}  // namespace

#if defined(_WIN32)
#define VIREO_MODULE_EXPORT extern "C" __declspec(dllexport)
#else
#define VIREO_MODULE_EXPORT extern "C" __attribute__((visibility("default")))
#endif

VIREO_MODULE_EXPORT std::int32_t VRMetaPlugin(std::int32_t selector, void* record) {
    if (selector == MetaPluginTerminate) return terminate();
    if (selector < MetaPluginInitialise || selector > MetaPluginPropertyList)
        return MetaPluginUnknownSelector;
    if (record == nullptr) return MetaPluginBadArgument;
    switch (selector) {
        case MetaPluginInitialise: return initialise();
        case MetaPluginCount: return count(*static_cast<MetaPluginCountRecord*>(record));
        case MetaPluginEntryInformation:
            return entryInformation(*static_cast<MetaPluginEntryRecord*>(record));
        default: return propertyList(*static_cast<MetaPluginPropertyListRecord*>(record));
    }
}
