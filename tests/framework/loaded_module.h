// SPDX-License-Identifier: MIT
// The built module, loaded and not initialised, as a host that trusts nothing sees it.
#ifndef VIREO_TESTS_FRAMEWORK_LOADED_MODULE_H
#define VIREO_TESTS_FRAMEWORK_LOADED_MODULE_H

#include "host/vireo_host.h"
#include "host/vrm/filter_invocation.h"

#include <array>
#include <bit>
#include <cstdint>
#include <vector>

/// A record with one value in every byte.
template <class Record>
Record filledRecord(std::uint8_t value) {
    std::array<std::uint8_t, sizeof(Record)> bytes;
    bytes.fill(value);
    return std::bit_cast<Record>(bytes);
}

class LoadedModule {
public:
    /// Throws std::runtime_error.
    LoadedModule();
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;
    ~LoadedModule();

    /// Whether any part of the program still holds the library.
    static bool isLoaded();
    /// The library's handle of the platform.
    void* native() const { return handle_; }

    std::int32_t call(std::int32_t selector, void* record) const { return function_(selector, record); }

    /// Selector 1 under an application type.
    std::int32_t initialise(std::int32_t applicationType = 5, std::uint16_t language = 0x0409) const {
        vireoHostSetApplicationType(applicationType);
        MetaPluginInitialiseRecord record{language};
        return call(MetaPluginInitialise, &record);
    }
    std::int32_t terminate() const { return call(MetaPluginTerminate, nullptr); }
    std::int32_t count() const {
        MetaPluginCountRecord record{-1};
        return call(MetaPluginCount, &record) == MetaPluginDone ? record.count : -1;
    }
    std::vector<MetaPluginEntryRecord> entries() const {
        std::vector<MetaPluginEntryRecord> entries;
        MetaPluginEntryRecord record{};
        for (; call(MetaPluginEntryInformation, &record) == MetaPluginDone; ++record.index)
            entries.push_back(record);
        return entries;
    }
    /// The ids of all entries in order.
    std::vector<std::uint32_t> ids() const {
        std::vector<std::uint32_t> ids;
        for (const MetaPluginEntryRecord& entry : entries()) ids.push_back(entry.id);
        return ids;
    }

private:
    void* handle_ = nullptr;
    MetaPluginFunction* function_ = nullptr;
};

#endif
