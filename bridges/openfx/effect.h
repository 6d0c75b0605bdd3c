// SPDX-License-Identifier: MIT
#ifndef VIREO_BRIDGES_OPENFX_EFFECT_H
#define VIREO_BRIDGES_OPENFX_EFFECT_H

#include "bridges/openfx/catalogue.h"
#include "bridges/openfx/host.h"

#include <memory>

namespace openfx {

/// A filter as a plug-in that a host asks about. Nothing changes between loading and unloading.
class Effect {
public:
    Effect(const Catalogue& catalogue, const Filter& filter) : catalogue_(catalogue), filter_(filter) {}

    void setHost(const OfxHost* host) { given_ = host; }

    /// One action of the host.
    OfxStatus perform(const std::string& action, const void* handle, OfxPropertySetHandle in,
                      OfxPropertySetHandle out);

    const Host& host() const { return *host_; }
    const Filter& filter() const { return filter_; }
    const Parameter& mix() const { return catalogue_.mix(); }
    const VireoEngine* engine() const { return catalogue_.engine(); }

private:
    OfxStatus load();
    OfxStatus describe(OfxImageEffectHandle effect) const;
    OfxStatus describeInContext(OfxImageEffectHandle effect) const;
    void define(OfxParamSetHandle parameters, const Parameter& parameter) const;

    /// Null where the host does not know such parameters.
    OfxPropertySetHandle defined(OfxParamSetHandle parameters, const char* type,
                                 const std::string& name) const;

    const Catalogue& catalogue_;
    const Filter& filter_;
    const OfxHost* given_ = nullptr;
    std::unique_ptr<const Host> host_;
};

}  // namespace openfx

#endif
