// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_VRM_VRM_H
#define VIREO_HOST_VRM_VRM_H

#include "host/host_export.h"

#include <cstdint>

namespace VRM {

using ApplicationType = std::int32_t;

/// The kind of application that runs the module. Types 5 and 8 get all filters.
VIREO_HOST_API ApplicationType GetApplicationType();

}  // namespace VRM

#endif
