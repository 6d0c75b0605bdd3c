// SPDX-License-Identifier: MIT
#include "bridges/openfx/host.h"

#include <algorithm>
#include <cstdio>

namespace openfx {
namespace {

template <class Suite>
const Suite* fetch(const OfxHost& host, const char* name, int version) {
    return static_cast<const Suite*>(host.fetchSuite(host.host, name, version));
}

}  // namespace

Host::Host(const OfxHost& host)
    : handle_(host.host),
      properties_(fetch<OfxPropertySuiteV1>(host, ofx::suite::property, 1)),
      effects_(fetch<OfxImageEffectSuiteV1>(host, ofx::suite::imageEffect, 1)),
      parameters_(fetch<OfxParameterSuiteV1>(host, ofx::suite::parameter, 1)),
      threads_(fetch<OfxMultiThreadSuiteV1>(host, ofx::suite::multiThread, 1)),
      messages_(fetch<OfxMessageSuiteV2>(host, ofx::suite::message, 2)),
      messagesStay_(messages_ != nullptr) {
    if (!messagesStay_) messages_ = fetch<OfxMessageSuiteV2>(host, ofx::suite::message, 1);
}

std::string Host::missing() const {
    const char* name = properties_ == nullptr   ? ofx::suite::property
                       : effects_ == nullptr    ? ofx::suite::imageEffect
                       : parameters_ == nullptr ? ofx::suite::parameter
                                                : nullptr;
    return name == nullptr ? "" : "Vireo needs a host with version 1 of " + std::string(name);
}

Properties Host::of(OfxImageEffectHandle effect) const {
    OfxPropertySetHandle handle = nullptr;
    effects_->getPropertySet(effect, &handle);
    return of(handle);
}

std::uint32_t Host::threads() const {
    constexpr unsigned most = 64;
    unsigned count = 1;
    if (threads_ == nullptr || threads_->multiThreadNumCPUs(&count) != ofx::Ok) return 1;
    return std::clamp(count, 1U, most);
}

void Host::say(OfxImageEffectHandle instance, const std::string& sentence) const {
    const char* const type = instance == nullptr ? ofx::messages::log : ofx::messages::error;
    const auto post = [&](auto* function) {
        return function(instance, type, "", "%s.", sentence.c_str()) == ofx::Ok;
    };
    const bool isPosted = messages_ != nullptr &&
                          ((messagesStay_ && instance != nullptr && post(messages_->setPersistentMessage)) ||
                           post(messages_->message));
    if (!isPosted) std::fprintf(stderr, "Vireo.ofx: %s.\n", sentence.c_str());
}

void Host::unsay(OfxImageEffectHandle instance) const {
    if (messagesStay_) messages_->clearPersistentMessage(instance);
}

}  // namespace openfx
