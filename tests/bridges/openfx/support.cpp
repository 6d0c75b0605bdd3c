// SPDX-License-Identifier: MIT
#include "tests/bridges/openfx/support.h"

#include <algorithm>
#include <cstring>
#include <random>
#include <stdexcept>

namespace openfx::test {
namespace {

void require(VireoStatus status) {
    if (status != VireoDone) throw std::runtime_error(vireoLastError()->sentence);
}

VireoEngine* engine() {
    static const std::unique_ptr<VireoEngine, void (*)(VireoEngine*)> opened = [] {
        VireoEngine* made = nullptr;
        require(vireoOpen(nullptr, &made));
        return std::unique_ptr<VireoEngine, void (*)(VireoEngine*)>(made, vireoClose);
    }();
    return opened.get();
}

std::int32_t copyFrame(void* clip, std::int64_t number, const VireoFrame* target, VireoTime*) {
    const Plain& picture = static_cast<const std::vector<Plain>*>(clip)->at(static_cast<std::size_t>(number));
    for (int y = 0; y < target->height; ++y)
        std::memcpy(static_cast<std::uint8_t*>(target->pixels) + y * target->stride, picture.row(y),
                    picture.rowBytes());
    return 0;
}

}  // namespace

const LoadedBundle& bundle() {
    static const LoadedBundle loaded(LoadedBundle::find(VIREO_TESTED_OPENFX, "Vireo"));
    return loaded;
}

OfxPlugin& pluginNamed(const std::string& key) {
    for (OfxPlugin* const plugin : bundle().plugins()) {
        if (plugin->pluginIdentifier == "vireo." + key) return *plugin;
    }
    throw std::out_of_range("there is no plug-in vireo." + key);
}

std::vector<std::string> effectKeys() {
    std::vector<std::string> keys;
    for (const OfxPlugin* plugin : bundle().plugins())
        keys.emplace_back(plugin->pluginIdentifier + std::strlen("vireo."));
    return keys;
}

std::string scriptName(const VireoParameter& parameter) {
    std::string name(parameter.englishName);
    std::erase_if(name, [](char c) { return c == ' ' || c == '(' || c == ')'; });
    return name;
}

Reference::Reference(const OfxPlugin& plugin) {
    std::uint32_t filter = 0;
    require(vireoFindFilter(engine(), plugin.pluginIdentifier + std::strlen("vireo."), &filter));
    VireoChain* chain = nullptr;
    require(vireoChainNew(engine(), &chain));
    chain_.reset(chain);
    require(vireoChainAddFilter(chain, filter));
    VireoFilter facts{};
    facts.structSize = sizeof facts;
    require(vireoDescribeFilter(engine(), filter, &facts));
    for (std::uint32_t i = 0; i < facts.parameterCount; ++i) {
        VireoParameter& parameter = parameters_.emplace_back();
        parameter.structSize = sizeof parameter;
        require(vireoDescribeParameter(engine(), filter, i, &parameter));
    }
}

void Reference::set(TestInstance& instance, std::size_t index, std::int64_t value) {
    const VireoParameter& parameter = parameters_.at(index);
    require(vireoChainSetValue(chain_.get(), 0, static_cast<std::int32_t>(index), value));
    if (parameter.kind == VireoColor) {
        const auto channel = [value](int shift) { return static_cast<double>(value >> shift & 0xFF) / 255; };
        instance.set(scriptName(parameter), {channel(16), channel(8), channel(0)});
    } else {
        const double shown = static_cast<double>(value) - (parameter.choiceCount > 0 ? parameter.minimum : 0);
        instance.set(scriptName(parameter), {shown, 0, 0});
    }
}

void Reference::setAtRandom(TestInstance& instance, std::uint32_t seed) {
    std::mt19937 random(seed);
    for (std::size_t i = 0; i < parameters_.size(); ++i) {
        const VireoParameter& parameter = parameters_[i];
        if (parameter.kind == VireoColor) {
            set(instance, i, random() & 0xFFFFFF);
        } else {
            const auto span = static_cast<std::uint32_t>(parameter.maximum - parameter.minimum);
            set(instance, i, static_cast<std::int64_t>(parameter.minimum) + random() % (span + 1));
        }
    }
}

std::string Reference::text() const {
    char* text = nullptr;
    require(vireoChainText(chain_.get(), VireoSpellingFull, &text));
    const std::string copy = text;
    vireoFree(text);
    return copy;
}

Plain Reference::render(std::vector<Plain> clip, std::size_t number, int interlacing, bool premultiplied,
                        double rate) const {
    Plain source = clip.at(number), result = source;
    const VireoFrame from = source.frame(premultiplied);
    VireoFrame to = result.frame(premultiplied);
    const VireoTime time{
        sizeof time, interlacing, static_cast<std::int64_t>(number), static_cast<std::int64_t>(clip.size()),
        rate,        -1};
    const VireoRenderOptions options{sizeof options, copyFrame, nullptr, &clip, 1};
    require(vireoChainRender(chain_.get(), &from, &to, &time, &options));
    return result;
}

}  // namespace openfx::test
