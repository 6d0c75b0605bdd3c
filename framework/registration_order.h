// SPDX-License-Identifier: MIT
// The filters in the order in which hosts count them: the one line that a new filter adds here.
#ifndef VIREO_FRAMEWORK_REGISTRATION_ORDER_H
#define VIREO_FRAMEWORK_REGISTRATION_ORDER_H

#include "framework/registry.h"

/// F(namespace of the filter)
// clang-format off
#define VIREO_FILTERS_FOR_ALL(F) \
    F(AlphaGlow) \
    F(Antialias) \
    F(Bend) \
    F(BlackWhite) \
    F(CameraView) \
    F(ColorBalance) \
    F(ColorPass) \
    F(ColorReplace) \
    F(EdgeFeather) \
    F(Extract) \
    F(GammaCorrection) \
    F(Ghosting) \
    F(HorizontalFlip) \
    F(HorizontalHold) \
    F(LensDistortion) \
    F(Replicate) \
    F(Solarize) \
    F(VerticalFlip) \
    F(VerticalHold)

/// Only applications of the full types get these.
#define VIREO_FILTERS_FOR_FULL_APPLICATIONS(F) \
    F(ConvolutionKernel) \
    F(Levels) \
    F(CameraBlur)
// clang-format on

#define VIREO_DECLARE_FILTER(filter)              \
    namespace filter {                            \
    void Register(VSK::PluginRegistry& registry); \
    }
VIREO_FILTERS_FOR_ALL(VIREO_DECLARE_FILTER)
VIREO_FILTERS_FOR_FULL_APPLICATIONS(VIREO_DECLARE_FILTER)
#undef VIREO_DECLARE_FILTER

#endif
