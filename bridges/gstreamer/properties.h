// SPDX-License-Identifier: MIT
// A filter's parameters as properties of its element.
#ifndef VIREO_BRIDGES_GSTREAMER_PROPERTIES_H
#define VIREO_BRIDGES_GSTREAMER_PROPERTIES_H

#include "vireo/vireo.h"

#include <gst/gst.h>

#include <cstdint>
#include <string>

namespace vireo::gstreamer {

/// Of properties that may change from frame to frame.
inline constexpr auto parameterFlags =
    static_cast<GParamFlags>(G_PARAM_READWRITE | GST_PARAM_CONTROLLABLE | GST_PARAM_MUTABLE_PLAYING);

/// "rgb-black-input-level" of "(RGB) Black Input Level".
std::string propertyName(const std::string& parameter);

/// The property of a parameter of the engine's filter. `owner` is the element's type.
GParamSpec* newProperty(const char* owner, std::uint32_t filter, std::uint32_t parameter);

/// A property's value as the engine stores it, and the way back.
std::int64_t storedValue(const GValue& value);
void setStoredValue(GValue& value, std::int64_t stored);

}  // namespace vireo::gstreamer

#endif
