// SPDX-License-Identifier: MIT
#include "host/vrm/vrm.h"

#include "host/vireo_host.h"

#include <atomic>

namespace {

constexpr VRM::ApplicationType fullApplication = 5;

std::atomic<VRM::ApplicationType> applicationType{fullApplication};

}  // namespace

namespace VRM {

ApplicationType GetApplicationType() { return applicationType; }

}  // namespace VRM

void vireoHostSetApplicationType(std::int32_t type) { applicationType = type; }
