// SPDX-License-Identifier: MIT
#include "bridges/gstreamer/engine.h"

namespace vireo::gstreamer {
namespace {

VireoEngine* opened = nullptr;

}  // namespace

bool openEngine() { return opened != nullptr || vireoOpen(nullptr, &opened) == VireoDone; }

const VireoEngine* engine() { return opened; }

VireoFilter describeFilter(std::uint32_t filter) {
    VireoFilter description{};
    description.structSize = sizeof description;
    vireoDescribeFilter(opened, filter, &description);
    return description;
}

VireoParameter describeParameter(std::uint32_t filter, std::uint32_t parameter) {
    VireoParameter description{};
    description.structSize = sizeof description;
    vireoDescribeParameter(opened, filter, parameter, &description);
    return description;
}

}  // namespace vireo::gstreamer
