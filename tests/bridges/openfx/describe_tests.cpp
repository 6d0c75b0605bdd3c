// SPDX-License-Identifier: MIT
// What hosts learn of the effects.
#include "tests/bridges/openfx/support.h"

#include <set>

namespace openfx::test {
namespace {

class OpenFxDescription : public OpenFx {};

TEST_F(OpenFxDescription, IsTheEnginesInEveryContext) {
    std::set<std::string> identifiers, labels;
    TestHost host;
    EXPECT_EQ(bundle().setHost(host.host), 0);
    for (OfxPlugin* const plugin : bundle().plugins()) {
        EXPECT_STREQ(plugin->pluginApi, "OfxImageEffectPluginAPI");
        EXPECT_EQ(plugin->apiVersion, 1);
        identifiers.insert(plugin->pluginIdentifier);
        const Reference reference(*plugin);
        for (const char* context : {"OfxImageEffectContextFilter", "OfxImageEffectContextGeneral"}) {
            DescribedPlugin described(*plugin, host, context);
            ASSERT_EQ(described.described, 0) << plugin->pluginIdentifier;
            const PropertySet& effect = described.descriptor.properties;
            labels.insert(effect.one<std::string>("OfxPropLabel"));
            EXPECT_EQ(reference.text(), effect.one<std::string>("OfxPropLabel"));
            EXPECT_EQ(effect.one<std::string>("OfxImageEffectPluginPropGrouping"), "Vireo");
            EXPECT_EQ(effect.all<std::string>("OfxImageEffectPropSupportedPixelDepths").size(), 3U);
            EXPECT_EQ(effect.all<int>("OfxImageEffectPropSupportsTiles"), std::vector<int>{0});
            EXPECT_EQ(effect.one<std::string>("OfxImageEffectPluginRenderThreadSafety"),
                      "OfxImageEffectRenderFullySafe");
            for (const char* clip : {"Source", "Output"}) {
                ASSERT_TRUE(described.descriptor.clips.contains(clip));
                EXPECT_EQ(described.descriptor.clips.at(clip)->properties.all<std::string>(
                              "OfxImageEffectPropSupportedComponents"),
                          (std::vector<std::string>{"OfxImageComponentRGBA", "OfxImageComponentRGB"}));
            }

            ASSERT_EQ(described.descriptor.parameters.size(), reference.parameters().size() + 2);
            for (const VireoParameter& known : reference.parameters()) {
                const TestParameter* const parameter = described.descriptor.parameter(scriptName(known));
                ASSERT_NE(parameter, nullptr) << known.name;
                const PropertySet& properties = parameter->properties;
                EXPECT_EQ(properties.one<std::string>("OfxPropLabel"), known.label);
                if (known.choiceCount > 0) {
                    EXPECT_EQ(properties.all<std::string>("OfxParamPropChoiceOption").size(),
                              known.choiceCount);
                    EXPECT_EQ(properties.one<int>("OfxParamPropDefault") + known.minimum, known.initial);
                    EXPECT_EQ(properties.one<int>("OfxParamPropAnimates"), 1);
                } else if (known.kind == VireoNumber) {
                    EXPECT_EQ(parameter->type, "OfxParamTypeInteger");
                    EXPECT_EQ(properties.one<int>("OfxParamPropMin"), known.minimum);
                    EXPECT_EQ(properties.one<int>("OfxParamPropDisplayMax"), known.maximum);
                    EXPECT_EQ(properties.one<int>("OfxParamPropDefault"), known.initial);
                    EXPECT_NE(properties.one<std::string>("OfxParamPropHint").find(known.unit),
                              std::string::npos);
                } else if (known.kind == VireoBoolean) {
                    EXPECT_EQ(parameter->type, "OfxParamTypeBoolean");
                    EXPECT_EQ(properties.one<int>("OfxParamPropAnimates"), 1);
                } else {
                    EXPECT_EQ(properties.all<double>("OfxParamPropDefault"),
                              (std::vector<double>{double(known.initial >> 16 & 0xFF) / 255,
                                                   double(known.initial >> 8 & 0xFF) / 255,
                                                   double(known.initial & 0xFF) / 255}));
                }
            }
            const TestParameter* const page = described.descriptor.parameter("Controls");
            ASSERT_NE(page, nullptr);
            for (const auto& child : page->properties.all<std::string>("OfxParamPropPageChild"))
                EXPECT_NE(described.descriptor.parameter(child), nullptr) << child;
        }
    }
    EXPECT_EQ(identifiers.size(), 22U);
    EXPECT_EQ(labels.size(), 22U);
}

TEST_F(OpenFxDescription, SaysWhatStandsForPerCents) {
    TestHost host;
    DescribedPlugin solarize(pluginNamed("Solarize"), host);
    EXPECT_EQ(solarize.descriptor.parameter("Threshold")->properties.one<std::string>("OfxParamPropHint"),
              "0 to 254 for 0 to 100 %");
}

TEST_F(OpenFxDescription, TellsWhereEarlierFramesAreMissing) {
    for (const bool givesThem : {true, false}) {
        TestHost host({.givesOtherFrames = givesThem});
        DescribedPlugin ghosting(pluginNamed("Ghosting"), host);
        const PropertySet& effect = ghosting.descriptor.properties;
        EXPECT_EQ(effect.one<int>("OfxImageEffectPropTemporalClipAccess"), 1);
        const std::string label = effect.one<std::string>("OfxPropLabel");
        EXPECT_EQ(label == "Ghosting", givesThem);
        EXPECT_EQ(label.find("Ghosting"), 0U);
    }
}

TEST_F(OpenFxDescription, ManagesWithHostsThatAnimateLessOrDefineNothing) {
    TestHost stiff({.animatesAll = false});
    DescribedPlugin still(pluginNamed("LensDistort"), stiff);
    EXPECT_EQ(still.descriptor.parameter("FillAlpha")->properties.one<int>("OfxParamPropAnimates"), 0);
    TestHost empty({.definesParameters = false});
    DescribedPlugin bare(pluginNamed("LensDistort"), empty);
    EXPECT_EQ(bare.described, 0);
    EXPECT_TRUE(bare.descriptor.parameters.empty());
}

}  // namespace
}  // namespace openfx::test
