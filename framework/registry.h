// SPDX-License-Identifier: MIT
#ifndef VIREO_FRAMEWORK_REGISTRY_H
#define VIREO_FRAMEWORK_REGISTRY_H

#include "host/vrm/filter_invocation.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// One filter as the host learns of it.
struct FilterEntryRecord {
    std::uint32_t kind;  ///< Always videoFilterKind.
    std::uint32_t id;
    FilterEntryProc entry;
    std::uint16_t piplId;  ///< Of the property list's resource.
};

inline constexpr std::uint32_t videoFilterKind = 6;

namespace VSK {

/// Where a filter's register function announces it.
class PluginRegistry {
public:
    virtual ~PluginRegistry() = default;
    virtual void Add(std::uint32_t id, FilterEntryProc entry, std::uint16_t piplId) = 0;
};

}  // namespace VSK

/// The capacity of a full array of records that must hold `required`: half as much again, or what is
/// required. Throws std::length_error past the largest count whose bytes 64 bits can tell.
std::size_t grownCapacity(std::size_t capacity, std::size_t required);

/// Appends a record, growing the array as grownCapacity tells. Throws std::bad_alloc and std::length_error.
void appendEntry(std::vector<FilterEntryRecord>& entries, const FilterEntryRecord& entry);

#endif
