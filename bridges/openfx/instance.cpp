// SPDX-License-Identifier: MIT
#include "bridges/openfx/instance.h"

#include "bridges/openfx/rendering.h"

#include <algorithm>
#include <cmath>

namespace openfx {

Instance::Instance(const Effect& effect, OfxImageEffectHandle handle)
    : effect_(effect),
      host_(effect.host()),
      handle_(handle),
      chains_(effect.engine(), effect.filter().index) {
    host_.effects().clipGetHandle(handle, ofx::clip::source, &source_, nullptr);
    host_.effects().clipGetHandle(handle, ofx::clip::output, &output_, nullptr);
    OfxParamSetHandle set = nullptr;
    host_.effects().getParamSet(handle, &set);
    const auto find = [&](const std::string& name) {
        OfxParamHandle found = nullptr;
        const OfxStatus status = host_.parameters().paramGetHandle(set, name.c_str(), &found, nullptr);
        return status == ofx::Ok ? found : nullptr;
    };
    for (const Parameter& parameter : effect.filter().parameters) parameters_.push_back(find(parameter.name));
    mix_ = find(mixName);
}

OfxStatus Instance::perform(const std::string& action, const Properties& in, const Properties& out) {
    if (action == ofx::action::render) return render(in);
    if (action == ofx::action::isIdentity) return isIdentity(in, out);
    if (action == ofx::action::getRegionsOfInterest) return regionsOfInterest(in, out);
    if (action == ofx::action::getFramesNeeded) return framesNeeded(in, out);
    const VireoFilter& facts = effect_.filter().facts;
    if (action == ofx::action::getClipPreferences && facts.readsTime != 0) {
        out.set(ofx::prop::frameVarying, 1);
        return ofx::Ok;
    }
    if (action == ofx::action::purgeCaches) {
        chains_.clear();
        return ofx::Ok;
    }
    return ofx::ReplyDefault;
}

Scale Instance::scaleOf(const Properties& in) {
    return {in.number(ofx::prop::renderScale, 1, 0), in.number(ofx::prop::renderScale, 1, 1)};
}

void Instance::set(const ChainPool::Lease& chain, OfxTime time, const Scale& scale) const {
    const Filter& filter = effect_.filter();
    for (std::size_t i = 0; i < parameters_.size(); ++i) {
        const Parameter& parameter = filter.parameters[i];
        std::int64_t value = valueAt(host_, parameters_[i], parameter, time);
        if (parameter.facts.inPixels != 0 && scale.isProxy())
            value = std::llround(static_cast<double>(value) * std::sqrt(scale.x * scale.y));
        chain.set(static_cast<std::int32_t>(i), value);
    }
    chain.set(VireoMix, valueAt(host_, mix_, effect_.mix(), time));
}

Properties Instance::sourceClip() const {
    OfxPropertySetHandle clip = nullptr;
    host_.effects().clipGetPropertySet(source_, &clip);
    return host_.of(clip);
}

ClipRange Instance::sourceRange() const {
    // Hosts tell of stills and generators that they have no end.
    constexpr double most = 1 << 30;
    const Properties clip = sourceClip();
    const double first = clip.number(ofx::prop::frameRange, 0, 0),
                 last = clip.number(ofx::prop::frameRange, -1, 1);
    const bool isKnown = std::abs(first) < most && last >= first && last - first < most;
    return isKnown ? ClipRange{first, static_cast<std::int64_t>(last - first) + 1} : ClipRange{0, 0};
}

VireoTime Instance::moment(OfxTime time, std::int32_t interlacing) const {
    const ClipRange range = sourceRange();
    const double since = std::max(time - range.first, 0.0);
    VireoTime moment{};
    moment.structSize = sizeof moment;
    moment.interlacing = interlacing;
    moment.frame = static_cast<std::int64_t>(since);
    moment.frames = range.frames;
    moment.rate = std::max(sourceClip().number(ofx::prop::frameRate, 0), 0.0);
    moment.seconds = -1;
    return moment;
}

OfxStatus Instance::isIdentity(const Properties& in, const Properties& out) {
    const OfxTime time = in.number(ofx::prop::time, 0);
    bool isIdentity = valueAt(host_, mix_, effect_.mix(), time) == 0;
    if (!isIdentity) {
        const ChainPool::Lease chain(chains_, 1);
        set(chain, time, scaleOf(in));
        const VireoTime now = moment(time, 0);
        std::int32_t answer = 0;
        check(vireoChainIsIdentity(chain.get(), &now, &answer));
        isIdentity = answer != 0;
    }
    if (!isIdentity) return ofx::ReplyDefault;
    out.set(ofx::prop::name, std::string(ofx::clip::source));
    out.set(ofx::prop::time, time);
    return ofx::Ok;
}

OfxStatus Instance::regionsOfInterest(const Properties& in, const Properties& out) const {
    OfxRectD all{};
    if (host_.effects().clipGetRegionOfDefinition(source_, in.number(ofx::prop::time, 0), &all) != ofx::Ok)
        return ofx::ReplyDefault;
    out.setAll(ofx::prop::sourceRegionOfInterest, {all.x1, all.y1, all.x2, all.y2});
    return ofx::Ok;
}

OfxStatus Instance::framesNeeded(const Properties& in, const Properties& out) const {
    const std::uint32_t earlier = effect_.filter().facts.earlierFrames;
    if (earlier == 0) return ofx::ReplyDefault;
    // Filters count time in fields: where frames are whole, they look half as far back.
    const std::string order = sourceClip().text(ofx::prop::fieldOrder);
    const bool isFielded = order == ofx::field::upper || order == ofx::field::lower;
    const double last = std::floor(in.number(ofx::prop::time, 0));
    const double first = std::max(last - (isFielded ? earlier : (earlier + 1) / 2), sourceRange().first);
    out.setAll(ofx::prop::sourceFrameRange, {std::min(first, last), last});
    return ofx::Ok;
}

OfxStatus Instance::render(const Properties& in) {
    try {
        Rendering(*this, in).run();
    } catch (const Refusal& refusal) {
        switch (refusal.status) {
            case VireoCancelled: return ofx::Ok;  // the host throws the picture away
            case VireoUnsupported: return ofx::BadImageFormat;
            default: break;
        }
        hasMessage_ = true;
        host_.say(handle_, refusal.sentence);
        return ofx::Failed;
    }
    if (hasMessage_.exchange(false)) host_.unsay(handle_);
    return ofx::Ok;
}

}  // namespace openfx
