// SPDX-License-Identifier: MIT
// The filters in the order in which hosts count them: the one line that a new filter adds here.
#ifndef VIREO_FRAMEWORK_REGISTRATION_ORDER_H
#define VIREO_FRAMEWORK_REGISTRATION_ORDER_H

#include "framework/registry.h"

/// F(id, namespace of the filter)
// clang-format off
#define VIREO_FILTERS_FOR_ALL(F) \
    F(10001, AlphaGlow) \
    F(10002, Antialias) \
    F(10004, Bend) \
    F(10006, BlackWhite) \
    F(10011, CameraView) \
    F(10013, ColorBalance) \
    F(10015, ColorPass) \
    F(10016, ColorReplace) \
    F(10020, EdgeFeather) \
    F(10022, Extract) \
    F(10026, GammaCorrection) \
    F(10029, Ghosting) \
    F(10030, HorizontalFlip) \
    F(10031, HorizontalHold) \
    F(10034, LensDistortion) \
    F(10042, Replicate) \
    F(10049, Solarize) \
    F(10052, VerticalFlip) \
    F(10053, VerticalHold)

/// Only applications of type 5 or 8 get these.
#define VIREO_FILTERS_FOR_FULL_APPLICATIONS(F) \
    F(10017, ConvolutionKernel) \
    F(10035, Levels) \
    F(10010, CameraBlur)
// clang-format on

#define VIREO_DECLARE_FILTER(id, filter)                         \
    namespace filter {                                           \
    void Register(VSK::PluginRegistry& registry, std::uint32_t); \
    }
VIREO_FILTERS_FOR_ALL(VIREO_DECLARE_FILTER)
VIREO_FILTERS_FOR_FULL_APPLICATIONS(VIREO_DECLARE_FILTER)
#undef VIREO_DECLARE_FILTER

#endif
