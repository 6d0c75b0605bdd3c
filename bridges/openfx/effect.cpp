// SPDX-License-Identifier: MIT
#include "bridges/openfx/effect.h"

#include "bridges/openfx/instance.h"
#include "bridges/openfx/parameters.h"

#include <cstdio>

namespace openfx {
namespace {

std::string plain(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.10g", value);
    return text;
}

std::string rangeText(double minimum, double maximum, const char* unit) {
    std::string text = plain(minimum) + " to " + plain(maximum);
    if (*unit != '\0') text += std::string(" ") + unit;
    return text;
}

/// The range, and what it stands for where people read another.
std::string hintOf(const VireoParameter& facts) {
    const bool isPlain = facts.minimum == facts.displayMinimum && facts.maximum == facts.displayMaximum;
    if (isPlain || *facts.unit == '\0') return rangeText(facts.minimum, facts.maximum, facts.unit);
    return rangeText(facts.minimum, facts.maximum, "") + " for " +
           rangeText(facts.displayMinimum, facts.displayMaximum, facts.unit);
}

double channel(std::int64_t color, int shift) { return static_cast<double>(color >> shift & 0xFF) / 255; }

}  // namespace

OfxStatus Effect::load() {
    if (given_ == nullptr) return ofx::Failed;
    auto host = std::make_unique<const Host>(*given_);
    if (const std::string missing = host->missing(); !missing.empty()) {
        host->say(nullptr, missing);
        return ofx::MissingHostFeature;
    }
    host_ = std::move(host);
    return ofx::Ok;
}

OfxStatus Effect::describe(OfxImageEffectHandle effect) const {
    const Properties properties = host_->of(effect);
    const VireoFilter& facts = filter_.facts;
    std::string label = facts.name;
    if (facts.earlierFrames > 0 && host_->properties().integer(ofx::prop::temporalClipAccess, 0) == 0)
        label += " (this host gives no earlier frames)";
    properties.set(ofx::prop::label, label);
    properties.set(ofx::prop::grouping, std::string("Vireo"));
    properties.set(ofx::prop::versionLabel, std::string(vireoVersion()));
    properties.set(ofx::prop::pluginDescription, std::string(facts.englishName) +
                                                     ", one of the classic Vireo video filters (" +
                                                     facts.englishCategory + ")");
    properties.setAll<std::string>(ofx::prop::supportedContexts,
                                   {ofx::context::filter, ofx::context::general});
    properties.setAll<std::string>(ofx::prop::supportedPixelDepths,
                                   {ofx::depth::byte, ofx::depth::word, ofx::depth::floating});
    properties.set(ofx::prop::singleInstance, 0);
    properties.set(ofx::prop::renderThreadSafety, std::string(ofx::fullySafe));
    properties.set(ofx::prop::hostFrameThreading, 0);
    properties.set(ofx::prop::supportsMultiResolution, 1);
    properties.set(ofx::prop::supportsTiles, 0);
    properties.set(ofx::prop::temporalClipAccess, facts.earlierFrames > 0 ? 1 : 0);
    properties.set(ofx::prop::fieldRenderTwiceAlways, 0);
    properties.set(ofx::prop::multipleClipDepths, 0);
    properties.set(ofx::prop::multipleClipPars, 0);
    return ofx::Ok;
}

OfxStatus Effect::describeInContext(OfxImageEffectHandle effect) const {
    for (const char* name : {ofx::clip::source, ofx::clip::output}) {
        OfxPropertySetHandle handle = nullptr;
        const OfxStatus status = host_->effects().clipDefine(effect, name, &handle);
        if (status != ofx::Ok) return status;
        const Properties clip = host_->of(handle);
        clip.setAll<std::string>(ofx::prop::supportedComponents,
                                 {ofx::components::rgba, ofx::components::rgb});
        clip.set(ofx::prop::supportsTiles, 0);
        clip.set(ofx::prop::temporalClipAccess, filter_.facts.earlierFrames > 0 ? 1 : 0);
        clip.set(ofx::prop::fieldExtraction, std::string(ofx::field::both));
    }

    OfxParamSetHandle parameters = nullptr;
    const OfxStatus status = host_->effects().getParamSet(effect, &parameters);
    if (status != ofx::Ok) return status;
    for (const Parameter& parameter : filter_.parameters) define(parameters, parameter);
    define(parameters, catalogue_.mix());

    if (const OfxPropertySetHandle page = defined(parameters, ofx::param::page, "Controls")) {
        int index = 0;
        for (const Parameter& parameter : filter_.parameters)
            host_->of(page).set(ofx::prop::paramPageChild, parameter.name, index++);
        host_->of(page).set(ofx::prop::paramPageChild, std::string(mixName), index);
    }
    return ofx::Ok;
}

OfxPropertySetHandle Effect::defined(OfxParamSetHandle parameters, const char* type,
                                     const std::string& name) const {
    OfxPropertySetHandle handle = nullptr;
    return host_->parameters().paramDefine(parameters, type, name.c_str(), &handle) == ofx::Ok ? handle
                                                                                               : nullptr;
}

void Effect::define(OfxParamSetHandle parameters, const Parameter& parameter) const {
    const VireoParameter& facts = parameter.facts;
    const ParameterKind kind = kindOf(parameter);
    const OfxPropertySetHandle handle = defined(parameters, typeOf(kind), parameter.name);
    if (handle == nullptr) return;
    const Properties properties = host_->of(handle);
    properties.set(ofx::prop::label, std::string(facts.label));
    const auto initial = static_cast<int>(facts.initial - static_cast<std::int64_t>(facts.minimum));
    switch (kind) {
        case ParameterKind::Color:
            properties.setAll(ofx::prop::paramDefault, {channel(facts.initial, 16), channel(facts.initial, 8),
                                                        channel(facts.initial, 0)});
            break;
        case ParameterKind::Boolean:
            properties.set(ofx::prop::paramDefault, facts.initial != 0 ? 1 : 0);
            properties.set(ofx::prop::paramAnimates,
                           host_->properties().integer(ofx::prop::animatesBooleans, 0));
            break;
        case ParameterKind::Choice:
            for (std::size_t i = 0; i < parameter.choices.size(); ++i)
                properties.set(ofx::prop::paramChoiceOption, parameter.choices[i], static_cast<int>(i));
            properties.set(ofx::prop::paramDefault, initial);
            properties.set(ofx::prop::paramAnimates,
                           host_->properties().integer(ofx::prop::animatesChoices, 0));
            break;
        case ParameterKind::Integer:
            properties.set(ofx::prop::paramHint, hintOf(facts));
            properties.set(ofx::prop::paramDefault, static_cast<int>(facts.initial));
            for (const char* name : {ofx::prop::paramMinimum, ofx::prop::paramDisplayMinimum})
                properties.set(name, static_cast<int>(facts.minimum));
            for (const char* name : {ofx::prop::paramMaximum, ofx::prop::paramDisplayMaximum})
                properties.set(name, static_cast<int>(facts.maximum));
            break;
    }
}

OfxStatus Effect::perform(const std::string& action, const void* handle, OfxPropertySetHandle in,
                          OfxPropertySetHandle out) {
    if (action == ofx::action::load) return load();
    if (host_ == nullptr) return ofx::Failed;
    if (action == ofx::action::unload) {
        host_.reset();
        return ofx::Ok;
    }
    auto* const effect = static_cast<OfxImageEffectHandle>(const_cast<void*>(handle));
    if (action == ofx::action::describe) return describe(effect);
    if (action == ofx::action::describeInContext) return describeInContext(effect);
    if (action == ofx::action::createInstance) {
        auto instance = std::make_unique<Instance>(*this, effect);
        host_->of(effect).set(ofx::prop::instanceData, static_cast<void*>(instance.get()));
        if (host_->of(effect).pointer(ofx::prop::instanceData) != instance.get()) return ofx::Failed;
        static_cast<void>(instance.release());
        return ofx::Ok;
    }

    auto* const instance = effect == nullptr
                               ? nullptr
                               : static_cast<Instance*>(host_->of(effect).pointer(ofx::prop::instanceData));
    if (instance == nullptr) return ofx::ReplyDefault;
    if (action == ofx::action::destroyInstance) {
        host_->of(effect).set(ofx::prop::instanceData, static_cast<void*>(nullptr));
        delete instance;
        return ofx::Ok;
    }
    return instance->perform(action, host_->of(in), host_->of(out));
}

}  // namespace openfx
