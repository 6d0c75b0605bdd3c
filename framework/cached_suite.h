// SPDX-License-Identifier: MIT
#ifndef VIREO_FRAMEWORK_CACHED_SUITE_H
#define VIREO_FRAMEWORK_CACHED_SUITE_H

#include "host/vrm/suites.h"

#include <atomic>
#include <cstdint>

/// A suite's cached pointer. A failed acquisition is tried again by the next call.
class CachedSuite {
public:
    constexpr CachedSuite(const char* name, std::int32_t version) : name_(name), version_(version) {}

    const void* find() {
        const void* suite = suite_.load(std::memory_order_acquire);
        if (suite != nullptr) return suite;
        if (vrmAcquireSuite(name_, version_, &suite) != 0 || suite == nullptr) return nullptr;
        suite_.store(suite, std::memory_order_release);
        return suite;
    }

    template <class Missing>
    const void* acquire() {
        const void* suite = find();
        if (suite == nullptr) throw Missing();
        return suite;
    }

private:
    const char* name_;
    std::int32_t version_;
    std::atomic<const void*> suite_{nullptr};
};

#endif
