// SPDX-License-Identifier: MIT
// How the effects behave towards hosts of every kind.
#include "tests/bridges/openfx/support.h"

#include <atomic>
#include <thread>

namespace openfx::test {
namespace {

class OpenFxManners : public OpenFx {
protected:
    static constexpr const char* identity = "OfxImageEffectActionIsIdentity";
};

TEST_F(OpenFxManners, DeclareWhatChangesNothing) {
    TestHost host;
    DescribedPlugin plugin(pluginNamed("Solarize"), host);
    TestInstance instance(plugin);
    instance.setSource({noise(8, 8, 1)}, {});
    const auto answer = [&] {
        PropertySet answered("identity");
        const OfxStatus status = instance.ask(identity, {.time = 3}, answered);
        if (status == 0) {
            EXPECT_EQ(answered.one<std::string>("OfxPropName"), "Source");
            EXPECT_EQ(answered.one<double>("OfxPropTime"), 3);
        }
        return status;
    };
    EXPECT_EQ(answer(), 14);
    instance.set("Threshold", {0, 0, 0});
    EXPECT_EQ(answer(), 0);
    instance.set("Threshold", {9, 0, 0});
    instance.set("Mix", {0, 0, 0});
    EXPECT_EQ(answer(), 0);
}

TEST_F(OpenFxManners, AskForTheFramesThatTheyNeed) {
    TestHost host;
    DescribedPlugin ghosting(pluginNamed("Ghosting"), host);
    TestInstance instance(ghosting);
    instance.setSource(std::vector<Plain>(30, noise(8, 8, 1)), {}, 10);
    const auto needed = [&](double time) {
        PropertySet answer("frames");
        EXPECT_EQ(instance.ask("OfxImageEffectActionGetFramesNeeded", {.time = time}, answer), 0);
        return answer.all<double>("OfxImageClipPropFrameRange_Source");
    };
    const auto used = [&](double time, const char* field) {
        instance.source().times.clear();
        instance.rendered({.time = time, .field = field}, {});
        const auto& times = instance.source().times;
        return std::vector<double>{*std::min_element(times.begin(), times.end()), time};
    };
    EXPECT_EQ(needed(30), (std::vector<double>{26, 30}));
    EXPECT_EQ(used(30, "OfxFieldNone"), needed(30));
    EXPECT_EQ(needed(11), (std::vector<double>{10, 11}));
    instance.source().properties.put<std::string>("OfxImageClipPropFieldOrder", {"OfxFieldUpper"});
    EXPECT_EQ(needed(30), (std::vector<double>{22, 30}));
    EXPECT_EQ(used(30, "OfxFieldBoth"), needed(30));

    PropertySet none("frames");
    DescribedPlugin flip(pluginNamed("HorizontalFlip"), host);
    TestInstance other(flip);
    EXPECT_EQ(other.ask("OfxImageEffectActionGetFramesNeeded", {.time = 3}, none), 14);
}

TEST_F(OpenFxManners, WantTheWholeSourceAndSayWhatVaries) {
    TestHost host;
    DescribedPlugin plugin(pluginNamed("Bend"), host);
    TestInstance instance(plugin);
    instance.setSource({noise(8, 6, 1)}, {.x = 2, .y = 3});
    PropertySet regions("regions"), preferences("preferences");
    EXPECT_EQ(instance.ask("OfxImageEffectActionGetRegionsOfInterest", {.window = {3, 3, 4, 4}}, regions), 0);
    EXPECT_EQ(regions.all<double>("OfxImageClipPropRoI_Source"), (std::vector<double>{2, 3, 10, 9}));
    EXPECT_EQ(instance.ask("OfxImageEffectActionGetClipPreferences", {}, preferences), 0);
    EXPECT_EQ(preferences.one<int>("OfxImageEffectFrameVarying"), 1);
}

TEST_F(OpenFxManners, AnswerUnknownActionsWithTheDefault) {
    TestHost host;
    DescribedPlugin plugin(pluginNamed("Levels"), host);
    TestInstance instance(plugin);
    for (const char* action :
         {"OfxActionSyncPrivateData", "OfxActionBeginInstanceEdit", "OfxActionInstanceChanged",
          "OfxImageEffectActionGetRegionOfDefinition", "OfxImageEffectActionBeginSequenceRender",
          "OfxImageEffectActionGetClipPreferences", "OfxActionOfTheYear2040"}) {
        PropertySet none("none");
        EXPECT_EQ(instance.ask(action, {}, none), 14) << action;
        EXPECT_EQ(plugin.act(action, nullptr), 14) << action;
    }
    PropertySet none("none");
    EXPECT_EQ(instance.ask("OfxActionPurgeCaches", {}, none), 0);
}

TEST_F(OpenFxManners, RefuseHostsWithoutTheirSuitesInASentence) {
    for (const char* suite : {"OfxPropertySuite", "OfxImageEffectSuite", "OfxParameterSuite"}) {
        for (const bool hasMessages : {true, false}) {
            TestHost host({.withheld = {std::string(suite) + " 1"}});
            if (!hasMessages)
                const_cast<HostTraits&>(host.traits)
                    .withheld.merge(std::set<std::string>{"OfxMessageSuite 1", "OfxMessageSuite 2"});
            testing::internal::CaptureStderr();
            DescribedPlugin plugin(pluginNamed("Levels"), host);
            const std::string onStderr = testing::internal::GetCapturedStderr();
            EXPECT_EQ(plugin.loaded, 4);
            const std::string sentence = "Vireo needs a host with version 1 of " + std::string(suite) + ".";
            ASSERT_EQ(host.messages.size(), hasMessages ? 1U : 0U);
            EXPECT_EQ(
                hasMessages ? host.messages[0] : onStderr,
                (hasMessages ? "OfxMessageLog: " : "Vireo.ofx: ") + sentence + (hasMessages ? "" : "\n"));
            EXPECT_EQ(plugin.act("OfxActionDescribe", &plugin.descriptor), 1);
        }
    }
}

TEST_F(OpenFxManners, SurviveInstancesThatRefuseEverything) {
    TestHost host;
    DescribedPlugin plugin(pluginNamed("Ghosting"), host);
    TestInstance instance(plugin);
    instance.setSource({noise(8, 6, 1)}, {});
    instance.source().properties.refusesAll = true;
    TestImage deaf(noise(8, 6, 1), {});
    EXPECT_EQ(instance.render({}, deaf), 0);
    deaf.properties.refusesAll = true;
    EXPECT_EQ(instance.render({}, deaf), 1000);

    TestEffect closed(host, "instance");
    closed.properties.refusesAll = true;
    EXPECT_EQ(plugin.act("OfxActionCreateInstance", &closed), 1);
    PropertySet none("none");
    EXPECT_EQ(plugin.act("OfxImageEffectActionRender", &closed, &none, &none), 14);
}

TEST_F(OpenFxManners, WorkWithoutOptionalSuites) {
    TestHost host({.withheld = {"OfxMessageSuite 1", "OfxMessageSuite 2", "OfxMultiThreadSuite 1"}});
    DescribedPlugin plugin(pluginNamed("VerticalFlip"), host);
    TestInstance instance(plugin);
    const Plain picture = noise(20, 10, 4);
    instance.setSource({picture}, {});
    EXPECT_EQ(instance.rendered({}, {}), Reference(plugin.plugin).render({picture}, 0));

    const Plain wide = noise(8192, 2, 4);
    instance.setSource({wide}, {});
    TestImage output(wide, {});
    testing::internal::CaptureStderr();
    EXPECT_EQ(instance.render({}, output), 1);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("Vertical Flip takes rows"), std::string::npos);
}

TEST_F(OpenFxManners, SayWhereAFrameIsTooLargeUntilOneIsNot) {
    const Plain wide = noise(8192, 2, 4), narrow = noise(80, 2, 4);
    for (const bool hasPersistent : {true, false}) {
        HostTraits traits;
        if (!hasPersistent) traits.withheld = {"OfxMessageSuite 2"};
        TestHost host(traits);
        DescribedPlugin plugin(pluginNamed("VerticalFlip"), host);
        TestInstance instance(plugin);
        instance.setSource({wide}, {});
        TestImage output(wide, {}), small(narrow, {});
        EXPECT_EQ(instance.render({}, output), 1);
        const std::string said = hasPersistent                      ? instance.effect.persistentMessage
                                 : instance.effect.messages.empty() ? ""
                                                                    : instance.effect.messages[0];
        EXPECT_NE(said.find("Vertical Flip takes rows of up to 32767 bytes"), std::string::npos) << said;
        instance.setSource({narrow}, {});
        EXPECT_EQ(instance.render({}, small), 0);
        EXPECT_EQ(instance.effect.persistentMessage, "");
    }
}

TEST_F(OpenFxManners, StopWhereTheHostSaysSo) {
    TestHost host({.processors = 2});
    DescribedPlugin plugin(pluginNamed("GammaCorrection"), host);
    TestInstance instance(plugin);
    const Plain picture = noise(64, 800, 4);
    instance.setSource({picture}, {});
    instance.set("Gamma", {5, 0, 0});
    std::atomic<int> asked = 0;
    const std::thread::id here = std::this_thread::get_id();
    instance.effect.aborts = [&] {
        EXPECT_EQ(std::this_thread::get_id(), here);
        return ++asked > 2;
    };
    TestImage output(picture, {});
    EXPECT_EQ(instance.render({}, output), 0);
    EXPECT_GT(asked, 2) << "a frame is rendered in bands, with a question before each";
    instance.effect.aborts = nullptr;
    EXPECT_NE(output.picture(), instance.rendered({}, {}));
    EXPECT_EQ(instance.effect.persistentMessage, "");
}

TEST_F(OpenFxManners, ClearWhatHasNoSource) {
    TestHost host;
    DescribedPlugin plugin(pluginNamed("Solarize"), host);
    TestInstance instance(plugin);
    instance.setSource({noise(8, 6, 1)}, {});
    EXPECT_EQ(instance.rendered({.time = 5}, {}), Plain(8, 6, VireoDepth8, true));
}

TEST_F(OpenFxManners, RefuseImagesThatTheyDidNotAskFor) {
    TestHost host;
    DescribedPlugin plugin(pluginNamed("Solarize"), host);
    TestInstance instance(plugin);
    instance.setSource({noise(8, 6, 1, VireoDepth16)}, {});
    TestImage bytes(noise(8, 6, 1), {}), alpha(noise(8, 6, 1, VireoDepth16), {}),
        empty(noise(8, 6, 1, VireoDepth16), {});
    EXPECT_EQ(instance.render({}, bytes), 1000);
    alpha.properties.erase("OfxImageEffectPropComponents");
    EXPECT_EQ(instance.render({}, alpha), 1000);
    empty.properties.put<void*>("OfxImagePropData", {nullptr});
    EXPECT_EQ(instance.render({}, empty), 1000);
    EXPECT_TRUE(bytes.holdsOutside({}));
}

TEST_F(OpenFxManners, RenderOnAnyNumberOfThreads) {
    TestHost host({.processors = 3});
    for (const char* key : {"CameraBlur", "Ghosting", "ConvolutionKernel"}) {
        DescribedPlugin plugin(pluginNamed(key), host);
        TestInstance instance(plugin);
        std::vector<Plain> clip;
        for (std::uint32_t i = 0; i < 12; ++i) clip.push_back(noise(60, 90, i));
        instance.setSource(clip, {});
        const Reference reference(plugin.plugin);
        std::vector<Plain> expected, results(clip.size());
        for (std::size_t i = 0; i < clip.size(); ++i) expected.push_back(reference.render(clip, i));
        std::vector<std::thread> threads;
        for (std::size_t first = 0; first < 4; ++first) {
            threads.emplace_back([&, first] {
                for (std::size_t i = first; i < clip.size(); i += 4)
                    results[i] = instance.rendered({.time = static_cast<double>(i)}, {});
            });
        }
        for (std::thread& thread : threads) thread.join();
        EXPECT_TRUE(results == expected) << key;
    }
}

}  // namespace
}  // namespace openfx::test
