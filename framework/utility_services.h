// SPDX-License-Identifier: MIT
#ifndef VIREO_FRAMEWORK_UTILITY_SERVICES_H
#define VIREO_FRAMEWORK_UTILITY_SERVICES_H

#include "host/vrm/filter_invocation.h"

#include <atomic>

/// The utility services of the first invocation that a filter sees. Hosts may leave them out of later ones.
class RememberedServices {
public:
    /// To be called at every entry. Null is not remembered.
    void remember(const FilterInvocation& invocation) {
        if (services_.load(std::memory_order_acquire) != nullptr) return;
        const UtilityServices* none = nullptr;
        services_.compare_exchange_strong(none, invocation.hostInstanceData.get(), std::memory_order_acq_rel);
    }

    /// Null while no invocation brought any.
    const UtilityServices* get() const { return services_.load(std::memory_order_acquire); }

private:
    std::atomic<const UtilityServices*> services_{nullptr};
};

#endif
