// SPDX-License-Identifier: MIT
#include "tests/bridges/openfx/host/test_host.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <sstream>
#include <stdexcept>

namespace openfx::test {
namespace {

TestEffect* effectOf(OfxImageEffectHandle handle) { return reinterpret_cast<TestEffect*>(handle); }
TestEffect* effectOf(OfxParamSetHandle handle) { return reinterpret_cast<TestEffect*>(handle); }
TestClip* clipOf(OfxImageClipHandle handle) { return reinterpret_cast<TestClip*>(handle); }
TestParameter* parameterOf(OfxParamHandle handle) { return reinterpret_cast<TestParameter*>(handle); }

/// Images that are out, by their properties.
struct Lent {
    std::unique_ptr<TestImage> image;  ///< Null for one that the caller keeps.
    TestClip* clip;
};
std::mutex lentMutex;
std::map<OfxPropertySetHandle, std::vector<Lent>> lentImages;

/// Which output a thread renders into.
thread_local TestImage* threadOutput = nullptr;

OfxStatus getImage(OfxImageClipHandle handle, OfxTime time, OfxRectD*, OfxPropertySetHandle* image) {
    TestClip& clip = *clipOf(handle);
    std::unique_ptr<TestImage> made;
    TestImage* given = clip.give ? nullptr : threadOutput;
    if (clip.give) {
        made = clip.give(time);
        given = made.get();
    }
    if (given == nullptr) return 1;
    const std::lock_guard lock(lentMutex);
    clip.times.push_back(time);
    ++clip.images;
    *image = given->properties.handle();
    lentImages[*image].push_back({std::move(made), &clip});
    return 0;
}

OfxStatus releaseImage(OfxPropertySetHandle image) {
    const std::lock_guard lock(lentMutex);
    const auto found = lentImages.find(image);
    if (found == lentImages.end()) {
        PropertySet::fault("an image is given back that is not out");
        return 9;
    }
    --found->second.back().clip->images;
    found->second.pop_back();
    if (found->second.empty()) lentImages.erase(found);
    return 0;
}

const OfxImageEffectSuiteV1 effectSuite{
    [](OfxImageEffectHandle effect, OfxPropertySetHandle* properties) {
        if (effect == nullptr) return 9;
        *properties = effectOf(effect)->properties.handle();
        return 0;
    },
    [](OfxImageEffectHandle effect, OfxParamSetHandle* parameters) {
        *parameters = reinterpret_cast<OfxParamSetHandle>(effect);
        return 0;
    },
    [](OfxImageEffectHandle effect, const char* name, OfxPropertySetHandle* properties) {
        auto& clip = effectOf(effect)->clips[name];
        if (clip != nullptr) return 6;
        clip = std::make_unique<TestClip>();
        *properties = clip->properties.handle();
        return 0;
    },
    [](OfxImageEffectHandle effect, const char* name, OfxImageClipHandle* clip,
       OfxPropertySetHandle* properties) {
        const auto found = effectOf(effect)->clips.find(name);
        if (found == effectOf(effect)->clips.end()) return 3;
        *clip = reinterpret_cast<OfxImageClipHandle>(found->second.get());
        if (properties != nullptr) *properties = found->second->properties.handle();
        return 0;
    },
    [](OfxImageClipHandle clip, OfxPropertySetHandle* properties) {
        if (clip == nullptr) return 9;
        *properties = clipOf(clip)->properties.handle();
        return 0;
    },
    getImage,
    releaseImage,
    [](OfxImageClipHandle clip, OfxTime, OfxRectD* bounds) {
        *bounds = clipOf(clip)->region;
        return 0;
    },
    [](OfxImageEffectHandle effect) {
        return effectOf(effect)->aborts && effectOf(effect)->aborts() ? 1 : 0;
    },
    [](OfxImageEffectHandle, std::size_t, OfxImageMemoryHandle*) { return 8; },
    [](OfxImageMemoryHandle) { return 9; },
    [](OfxImageMemoryHandle, void**) { return 9; },
    [](OfxImageMemoryHandle) { return 9; }};

OfxStatus defineParameter(OfxParamSetHandle set, const char* type, const char* name,
                          OfxPropertySetHandle* properties) {
    TestEffect& effect = *effectOf(set);
    if (!effect.host.traits.definesParameters) return 5;
    if (effect.parameter(name) != nullptr) return 6;
    const std::string word(name);
    if (!std::all_of(word.begin(), word.end(), [](char c) { return c > ' ' && c < 127; }))
        PropertySet::fault("a parameter's name is not plain: " + word);
    effect.parameters.push_back(
        std::make_unique<TestParameter>(TestParameter{word, type, PropertySet(type), {}}));
    *properties = effect.parameters.back()->properties.handle();
    return 0;
}

OfxStatus valueOf(OfxParamHandle handle, OfxTime time, va_list out) {
    if (handle == nullptr) return 9;
    const TestParameter& parameter = *parameterOf(handle);
    if (parameter.keys.empty()) return 1;
    const auto value = parameter.at(time);
    if (parameter.type == "OfxParamTypeRGB") {
        for (const double channel : value) *va_arg(out, double*) = channel;
    } else {
        *va_arg(out, int*) = static_cast<int>(value[0]);
    }
    return 0;
}

OfxStatus valueAtTime(OfxParamHandle handle, OfxTime time, ...) {
    va_list out;
    va_start(out, time);
    const OfxStatus status = valueOf(handle, time, out);
    va_end(out);
    return status;
}

OfxStatus currentValue(OfxParamHandle handle, ...) {
    va_list out;
    va_start(out, handle);
    const OfxStatus status = valueOf(handle, 0, out);
    va_end(out);
    return status;
}

OfxStatus findParameter(OfxParamSetHandle set, const char* name, OfxParamHandle* found,
                        OfxPropertySetHandle* properties) {
    if (set == nullptr || !effectOf(set)->host.traits.findsParameters) return 3;
    TestParameter* const parameter = effectOf(set)->parameter(name);
    if (parameter == nullptr) return 3;
    *found = reinterpret_cast<OfxParamHandle>(parameter);
    if (properties != nullptr) *properties = parameter->properties.handle();
    return 0;
}

const OfxParameterSuiteV1 parameterSuite{.paramDefine = defineParameter,
                                         .paramGetHandle = findParameter,
                                         .paramGetValue = currentValue,
                                         .paramGetValueAtTime = valueAtTime};

std::string written(const char* format, va_list values) {
    char text[1000];
    std::vsnprintf(text, sizeof text, format, values);
    return text;
}

/// Messages of no object go to the host that was made last.
TestHost* latestHost = nullptr;

OfxStatus postMessage(void* handle, const char* type, const char*, const char* format, ...) {
    va_list values;
    va_start(values, format);
    const std::string text = std::string(type) + ": " + written(format, values);
    va_end(values);
    TestHost& host = handle == nullptr ? *latestHost : static_cast<TestEffect*>(handle)->host;
    const std::lock_guard lock(host.mutex);
    (handle == nullptr ? host.messages : static_cast<TestEffect*>(handle)->messages).push_back(text);
    return 0;
}

OfxStatus postPersistently(void* handle, const char*, const char*, const char* format, ...) {
    if (handle == nullptr) return 9;
    va_list values;
    va_start(values, format);
    static_cast<TestEffect*>(handle)->persistentMessage = written(format, values);
    va_end(values);
    return 0;
}

const OfxMessageSuiteV2 messageSuite{postMessage, postPersistently, [](void* handle) {
                                         static_cast<TestEffect*>(handle)->persistentMessage.clear();
                                         return 0;
                                     }};

const OfxMultiThreadSuiteV1 threadSuite{.multiThreadNumCPUs = [](unsigned* count) {
    *count = latestHost->traits.processors;
    return 0;
}};

const void* fetchSuite(OfxPropertySetHandle handle, const char* name, int version) {
    const std::string wanted = std::string(name) + " " + std::to_string(version);
    if (PropertySet::of(handle) != &latestHost->properties || latestHost->traits.withheld.contains(wanted))
        return nullptr;
    if (wanted == "OfxPropertySuite 1") return &propertySuite;
    if (wanted == "OfxImageEffectSuite 1") return &effectSuite;
    if (wanted == "OfxParameterSuite 1") return &parameterSuite;
    if (wanted == "OfxMultiThreadSuite 1") return &threadSuite;
    if (wanted == "OfxMessageSuite 1" || wanted == "OfxMessageSuite 2") return &messageSuite;
    PropertySet::fault("a suite is asked for that the interface does not have: " + wanted);
    return nullptr;
}

}  // namespace

TestHost::TestHost(HostTraits given) : traits(std::move(given)), host{properties.handle(), fetchSuite} {
    latestHost = this;
    properties.put<std::string>("OfxPropName", {"Test host"});
    properties.put<int>("OfxImageEffectPropTemporalClipAccess", {traits.givesOtherFrames ? 1 : 0});
    properties.put<int>("OfxParamHostPropSupportsBooleanAnimation", {traits.animatesAll ? 1 : 0});
    properties.put<int>("OfxParamHostPropSupportsChoiceAnimation", {traits.animatesAll ? 1 : 0});
}

std::array<double, 3> TestParameter::at(double time) const {
    const auto behind = keys.lower_bound(time);
    if (behind == keys.end()) return std::prev(behind)->second;
    if (behind == keys.begin()) return behind->second;
    const auto before = std::prev(behind);
    const double part = (time - before->first) / (behind->first - before->first);
    std::array<double, 3> value{};
    for (std::size_t i = 0; i < 3; ++i)
        value[i] = before->second[i] + part * (behind->second[i] - before->second[i]);
    return value;
}

TestParameter* TestEffect::parameter(const std::string& name) {
    const auto found = std::find_if(parameters.begin(), parameters.end(),
                                    [&](const auto& parameter) { return parameter->name == name; });
    return found == parameters.end() ? nullptr : found->get();
}

DescribedPlugin::DescribedPlugin(OfxPlugin& of, TestHost& by, const std::string& context)
    : plugin(of), host(by), descriptor(by, "effect") {
    plugin.setHost(&host.host);
    loaded = plugin.mainEntry("OfxActionLoad", nullptr, nullptr, nullptr);
    if (loaded != 0 && loaded != 14) return;
    described = act("OfxActionDescribe", &descriptor);
    if (described != 0) return;
    PropertySet arguments("arguments");
    arguments.put<std::string>("OfxImageEffectPropContext", {context});
    described = act("OfxImageEffectActionDescribeInContext", &descriptor, &arguments);
}

DescribedPlugin::~DescribedPlugin() {
    if (loaded == 0) plugin.mainEntry("OfxActionUnload", nullptr, nullptr, nullptr);
}

OfxStatus DescribedPlugin::act(const char* action, TestEffect* effect, PropertySet* in,
                               PropertySet* out) const {
    return plugin.mainEntry(action, effect, in == nullptr ? nullptr : in->handle(),
                            out == nullptr ? nullptr : out->handle());
}

TestInstance::TestInstance(const DescribedPlugin& plugin) : effect(plugin.host, "instance"), plugin_(plugin) {
    for (const auto& described : plugin.descriptor.parameters) {
        auto made = std::make_unique<TestParameter>(*described);
        const bool isColor = made->type == "OfxParamTypeRGB", isPage = made->type == "OfxParamTypePage";
        if (plugin.host.traits.hasValues && !isPage) {
            std::array<double, 3> initial{};
            if (isColor) {
                const auto channels = made->properties.all<double>("OfxParamPropDefault");
                std::copy_n(channels.begin(), std::min<std::size_t>(channels.size(), 3), initial.begin());
            } else {
                initial[0] = made->properties.one<int>("OfxParamPropDefault");
            }
            made->keys = {{0, initial}};
        }
        effect.parameters.push_back(std::move(made));
    }
    for (const char* name : {"Source", "Output"}) {
        effect.clips[name] = std::make_unique<TestClip>();
        effect.clips[name]->properties.put<std::string>("OfxImageClipPropFieldOrder", {"OfxFieldNone"});
    }
    created = plugin.act("OfxActionCreateInstance", &effect);
}

TestInstance::~TestInstance() {
    plugin_.act("OfxActionDestroyInstance", &effect);
    for (const auto& [name, clip] : effect.clips) {
        if (clip->images != 0) PropertySet::fault("images of " + name + " were not given back");
    }
}

void TestInstance::set(const std::string& name, std::array<double, 3> value, double time) {
    TestParameter* const parameter = effect.parameter(name);
    if (parameter == nullptr) throw std::out_of_range("there is no parameter " + name);
    if (time == 0) parameter->keys.clear();
    parameter->keys[time] = value;
}

void TestInstance::setSource(std::vector<Plain> frames, const Lie& lie, double first, double rate) {
    const Plain& shape = frames.front();
    width_ = shape.width;
    height_ = shape.height;
    depth_ = shape.depth;
    hasAlpha_ = shape.hasAlpha;
    const double last = first + static_cast<double>(frames.size()) - 1;
    source().region = {double(lie.x), double(lie.y), double(lie.x + width_), double(lie.y + height_)};
    source().properties.put<double>("OfxImageEffectPropFrameRange", {first, last});
    source().properties.put<double>("OfxImageEffectPropFrameRate", {rate});
    source().give = [frames = std::move(frames), lie, first](double time) -> std::unique_ptr<TestImage> {
        const double number = std::floor(time - first);
        if (number < 0 || number >= static_cast<double>(frames.size())) return nullptr;
        return std::make_unique<TestImage>(frames[static_cast<std::size_t>(number)], lie);
    };
}

void TestInstance::setStill(const Plain& picture, int frames) {
    setSource({picture}, {});
    source().properties.put<double>("OfxImageEffectPropFrameRange", {0.0, frames - 1.0});
    source().give = [give = source().give](double) { return give(0); };
}

OfxStatus TestInstance::ask(const char* action, const RenderCall& call, PropertySet& answer) {
    PropertySet arguments("arguments");
    arguments.put<double>("OfxPropTime", {call.time});
    arguments.put<double>("OfxImageEffectPropRenderScale", {call.scaleX, call.scaleY});
    arguments.put<std::string>("OfxImageEffectPropFieldToRender", {call.field});
    arguments.put<int>("OfxImageEffectPropRenderWindow",
                       {call.window.x1, call.window.y1, call.window.x2, call.window.y2});
    return plugin_.act(action, &effect, &arguments, &answer);
}

OfxStatus TestInstance::render(const RenderCall& call, TestImage& output) {
    RenderCall filled = call;
    if (filled.window.x1 == filled.window.x2) filled.window = output.area();
    threadOutput = &output;
    PropertySet none("render");
    const OfxStatus status = ask("OfxImageEffectActionRender", filled, none);
    threadOutput = nullptr;
    return status;
}

Plain TestInstance::rendered(const RenderCall& call, const Lie& lie) {
    TestImage output(noise(width_, height_, 99, depth_, hasAlpha_), lie);
    const OfxRectI changed = call.window.x1 == call.window.x2 ? output.area() : call.window;
    const OfxStatus status = render(call, output);
    if (status != 0) PropertySet::fault("a render answers with " + std::to_string(status));
    if (!output.holdsOutside(changed)) PropertySet::fault("a render writes outside its window");
    return output.picture();
}

}  // namespace openfx::test
