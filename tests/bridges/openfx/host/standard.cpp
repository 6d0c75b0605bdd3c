// SPDX-License-Identifier: MIT
#include "tests/bridges/openfx/host/standard.h"

#include <map>

namespace openfx::test {
namespace {

using enum PropertyType;

const std::set<std::string> effect{"effect"}, clip{"clip"}, read{};
const std::set<std::string> parameters{"OfxParamTypeInteger", "OfxParamTypeBoolean", "OfxParamTypeChoice",
                                       "OfxParamTypeRGB", "OfxParamTypePage"};
const std::set<std::string> values{"OfxParamTypeInteger", "OfxParamTypeBoolean", "OfxParamTypeChoice",
                                   "OfxParamTypeRGB"};
const std::set<std::string> numbers{"OfxParamTypeInteger"};
const std::set<std::string> fields{"OfxFieldNone", "OfxFieldLower", "OfxFieldUpper", "OfxFieldBoth"};
const std::set<std::string> depths{"OfxBitDepthByte", "OfxBitDepthShort", "OfxBitDepthFloat"};
const std::set<std::string> components{"OfxImageComponentRGBA", "OfxImageComponentRGB"};

std::set<std::string> together(std::set<std::string> one, const std::set<std::string>& other) {
    one.insert(other.begin(), other.end());
    return one;
}

const std::map<std::string, StandardProperty> properties{
    // Objects of every kind.
    {"OfxPropType", {String, 1, read, {}}},
    {"OfxPropName", {String, 1, {"identity"}, {}}},
    {"OfxPropLabel", {String, 1, together(together(effect, clip), parameters), {}}},
    {"OfxPropVersion", {Int, 0, effect, {}}},
    {"OfxPropVersionLabel", {String, 1, effect, {}}},
    {"OfxPropPluginDescription", {String, 1, effect, {}}},
    {"OfxPropTime", {Double, 1, {"identity"}, {}}},
    {"OfxPropInstanceData", {Pointer, 1, {"instance"}, {}}},

    // Effects.
    {"OfxImageEffectPluginPropGrouping", {String, 1, effect, {}}},
    {"OfxImageEffectPropSupportedContexts",
     {String, 0, effect, {"OfxImageEffectContextFilter", "OfxImageEffectContextGeneral"}}},
    {"OfxImageEffectPropSupportedPixelDepths", {String, 0, effect, depths}},
    {"OfxImageEffectPluginPropSingleInstance", {Int, 1, effect, {}}},
    {"OfxImageEffectPluginRenderThreadSafety",
     {String,
      1,
      effect,
      {"OfxImageEffectRenderUnsafe", "OfxImageEffectRenderInstanceSafe", "OfxImageEffectRenderFullySafe"}}},
    {"OfxImageEffectPluginPropHostFrameThreading", {Int, 1, effect, {}}},
    {"OfxImageEffectPluginPropFieldRenderTwiceAlways", {Int, 1, effect, {}}},
    {"OfxImageEffectPropSupportsMultiResolution", {Int, 1, effect, {}}},
    {"OfxImageEffectPropSupportsTiles", {Int, 1, {"effect", "clip"}, {}}},
    {"OfxImageEffectPropTemporalClipAccess", {Int, 1, {"effect", "clip"}, {}}},
    {"OfxImageEffectPropMultipleClipDepths", {Int, 1, effect, {}}},
    {"OfxImageEffectPropSupportsMultipleClipPARs", {Int, 1, effect, {}}},
    {"OfxImageEffectPropContext", {String, 1, read, {}}},

    // Clips.
    {"OfxImageEffectPropSupportedComponents", {String, 0, clip, components}},
    {"OfxImageClipPropFieldExtraction",
     {String, 1, clip, {"OfxFieldBoth", "OfxFieldSingle", "OfxFieldDoubled"}}},
    {"OfxImageClipPropOptional", {Int, 1, clip, {}}},
    {"OfxImageClipPropConnected", {Int, 1, read, {}}},
    {"OfxImageClipPropFieldOrder", {String, 1, read, fields}},
    {"OfxImageEffectPropFrameRange", {Double, 2, read, {}}},
    {"OfxImageEffectPropFrameRate", {Double, 1, read, {}}},

    // Parameters.
    {"OfxParamPropType", {String, 1, read, {}}},
    {"OfxParamPropHint", {String, 1, parameters, {}}},
    {"OfxParamPropDefault", {Int, 0, values, {}}},
    {"OfxParamPropAnimates", {Int, 1, values, {}}},
    {"OfxParamPropMin", {Int, 1, numbers, {}}},
    {"OfxParamPropMax", {Int, 1, numbers, {}}},
    {"OfxParamPropDisplayMin", {Int, 1, numbers, {}}},
    {"OfxParamPropDisplayMax", {Int, 1, numbers, {}}},
    {"OfxParamPropChoiceOption", {String, 0, {"OfxParamTypeChoice"}, {}}},
    {"OfxParamPropPageChild", {String, 0, {"OfxParamTypePage"}, {}}},

    // Hosts.
    {"OfxParamHostPropSupportsBooleanAnimation", {Int, 1, read, {}}},
    {"OfxParamHostPropSupportsChoiceAnimation", {Int, 1, read, {}}},

    // Images.
    {"OfxImageEffectPropPixelDepth", {String, 1, read, depths}},
    {"OfxImageEffectPropComponents", {String, 1, read, components}},
    {"OfxImageEffectPropPreMultiplication",
     {String, 1, read, {"OfxImageOpaque", "OfxImageAlphaPremultiplied", "OfxImageAlphaUnPremultiplied"}}},
    {"OfxImagePropData", {Pointer, 1, read, {}}},
    {"OfxImagePropBounds", {Int, 4, read, {}}},
    {"OfxImagePropRegionOfDefinition", {Int, 4, read, {}}},
    {"OfxImagePropRowBytes", {Int, 1, read, {}}},
    {"OfxImagePropField", {String, 1, read, fields}},
    {"OfxImagePropPixelAspectRatio", {Double, 1, read, {}}},

    // Arguments of actions.
    {"OfxImageEffectPropFieldToRender", {String, 1, read, fields}},
    {"OfxImageEffectPropRenderWindow", {Int, 4, read, {}}},
    {"OfxImageEffectPropRenderScale", {Double, 2, read, {}}},
    {"OfxImageEffectFrameVarying", {Int, 1, {"preferences"}, {}}},
    {"OfxImageClipPropRoI_Source", {Double, 4, {"regions"}, {}}},
    {"OfxImageClipPropFrameRange_Source", {Double, 0, {"frames"}, {}}},
};

}  // namespace

const StandardProperty* standardProperty(const std::string& name) {
    const auto found = properties.find(name);
    return found == properties.end() ? nullptr : &found->second;
}

}  // namespace openfx::test
