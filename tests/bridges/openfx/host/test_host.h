// SPDX-License-Identifier: MIT
// A host for tests: strict where the interface is, and failing wherever it may.
#ifndef VIREO_TESTS_BRIDGES_OPENFX_HOST_TEST_HOST_H
#define VIREO_TESTS_BRIDGES_OPENFX_HOST_TEST_HOST_H

#include "tests/bridges/openfx/host/property_set.h"
#include "tests/bridges/openfx/host/test_image.h"

#include <array>
#include <atomic>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace openfx::test {

/// What a host lacks or does.
struct HostTraits {
    std::set<std::string> withheld = {};  ///< Suites, with their version: "OfxMessageSuite 2".
    bool givesOtherFrames = true;
    bool animatesAll = true;
    bool definesParameters = true;
    bool findsParameters = true;
    bool hasValues = true;
    unsigned processors = 2;
};

class TestHost {
public:
    explicit TestHost(HostTraits given = {});
    TestHost(const TestHost&) = delete;
    TestHost& operator=(const TestHost&) = delete;

    const HostTraits traits;
    OfxHost host;
    PropertySet properties{"host"};

    /// Of no instance.
    std::vector<std::string> messages;
    std::mutex mutex;
};

struct TestParameter {
    std::string name;
    std::string type;
    PropertySet properties;
    std::map<double, std::array<double, 3>> keys;  ///< By time, straight lines between.

    std::array<double, 3> at(double time) const;
};

struct TestClip {
    PropertySet properties{"clip"};
    std::function<std::unique_ptr<TestImage>(double time)> give;
    OfxRectD region{};
    TestImage* lent = nullptr;  ///< Where the caller keeps the image: an output's.
    std::atomic<int> images = 0;
    std::vector<double> times;
};

/// An effect's description or an instance of it.
struct TestEffect {
    TestEffect(TestHost& of, const std::string& kind) : host(of), properties(kind) {}
    TestEffect(const TestEffect&) = delete;
    TestEffect& operator=(const TestEffect&) = delete;

    TestHost& host;
    PropertySet properties;
    std::vector<std::unique_ptr<TestParameter>> parameters;
    std::map<std::string, std::unique_ptr<TestClip>> clips;
    std::function<bool()> aborts;
    std::vector<std::string> messages;
    std::string persistentMessage;

    OfxImageEffectHandle handle() { return reinterpret_cast<OfxImageEffectHandle>(this); }
    TestParameter* parameter(const std::string& name);
};

/// The library, found and loaded as hosts do.
class LoadedBundle {
public:
    /// The first of its name below the folders of a search path.
    static std::filesystem::path find(const std::string& searchPath, const std::string& name);

    explicit LoadedBundle(const std::filesystem::path& bundle);
    LoadedBundle(const LoadedBundle&) = delete;
    LoadedBundle& operator=(const LoadedBundle&) = delete;
    ~LoadedBundle();

    OfxStatus setHost(const OfxHost& host) const;
    std::vector<OfxPlugin*> plugins() const;

private:
    void* symbol(const char* name) const;

    void* library_ = nullptr;
};

/// One render action.
struct RenderCall {
    double time = 0;
    std::string field = "OfxFieldNone";
    double scaleX = 1, scaleY = 1;
    OfxRectI window{};  ///< Empty: the whole picture.
};

/// A plug-in that was described, and instances of it.
class DescribedPlugin {
public:
    DescribedPlugin(OfxPlugin& plugin, TestHost& host,
                    const std::string& context = "OfxImageEffectContextFilter");
    ~DescribedPlugin();

    OfxStatus act(const char* action, TestEffect* effect, PropertySet* in = nullptr,
                  PropertySet* out = nullptr) const;

    OfxPlugin& plugin;
    TestHost& host;
    OfxStatus loaded = 0, described = 0;
    TestEffect descriptor;
};

class TestInstance {
public:
    explicit TestInstance(const DescribedPlugin& plugin);
    TestInstance(const TestInstance&) = delete;
    TestInstance& operator=(const TestInstance&) = delete;
    ~TestInstance();

    TestEffect effect;
    OfxStatus created = 0;

    TestClip& source() { return *effect.clips.at("Source"); }

    void set(const std::string& parameter, std::array<double, 3> value, double time = 0);

    /// The source's frames: the same way of lying, one for each time from `first`.
    void setSource(std::vector<Plain> frames, const Lie& lie, double first = 0, double rate = 25);

    /// The same picture in all of so many frames.
    void setStill(const Plain& picture, int frames);

    /// Renders into an image.
    OfxStatus render(const RenderCall& call, TestImage& output);

    /// The same as a picture, with the output like the source.
    Plain rendered(const RenderCall& call, const Lie& lie);

    /// An action's answer.
    OfxStatus ask(const char* action, const RenderCall& call, PropertySet& answer);

private:
    const DescribedPlugin& plugin_;
    int width_ = 0, height_ = 0;
    VireoDepth depth_ = VireoDepth8;
    bool hasAlpha_ = true;
    std::mutex outputMutex_;
};

}  // namespace openfx::test

#endif
