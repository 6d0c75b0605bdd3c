// SPDX-License-Identifier: MIT
#ifndef VIREO_BRIDGES_OPENFX_HOST_H
#define VIREO_BRIDGES_OPENFX_HOST_H

#include "bridges/openfx/properties.h"

#include <cstdint>
#include <string>

namespace openfx {

/// A host, with the suites that it offers.
class Host {
public:
    explicit Host(const OfxHost& host);

    /// The sentence that tells which suite the plug-in cannot do without; empty where all are there.
    std::string missing() const;

    const OfxImageEffectSuiteV1& effects() const { return *effects_; }
    const OfxParameterSuiteV1& parameters() const { return *parameters_; }

    Properties properties() const { return of(handle_); }
    Properties of(OfxPropertySetHandle handle) const { return {*properties_, handle}; }
    Properties of(OfxImageEffectHandle effect) const;

    /// How many threads may work on a frame.
    std::uint32_t threads() const;

    /// Tells people a sentence about an instance until it is taken back, or the host's log one about none.
    void say(OfxImageEffectHandle instance, const std::string& sentence) const;
    void unsay(OfxImageEffectHandle instance) const;

private:
    OfxPropertySetHandle handle_;
    const OfxPropertySuiteV1* properties_;
    const OfxImageEffectSuiteV1* effects_;
    const OfxParameterSuiteV1* parameters_;
    const OfxMultiThreadSuiteV1* threads_;
    const OfxMessageSuiteV2* messages_;  ///< What both versions have, and more where the next is true.
    bool messagesStay_;
};

}  // namespace openfx

#endif
