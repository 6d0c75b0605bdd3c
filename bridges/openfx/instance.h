// SPDX-License-Identifier: MIT
#ifndef VIREO_BRIDGES_OPENFX_INSTANCE_H
#define VIREO_BRIDGES_OPENFX_INSTANCE_H

#include "bridges/openfx/chain_pool.h"
#include "bridges/openfx/effect.h"
#include "bridges/openfx/image.h"
#include "bridges/openfx/parameters.h"

#include <atomic>
#include <string>
#include <vector>

namespace openfx {

/// How much smaller than in the end a picture is rendered.
struct Scale {
    double x = 1, y = 1;

    bool isProxy() const { return (x < 1 || y < 1) && x > 0 && y > 0; }
};

/// The frames of a clip; none where that is not known.
struct ClipRange {
    double first;
    std::int64_t frames;
};

/// What the host made of an effect: its clips, its parameters' values. Renders on any number of threads.
class Instance {
public:
    Instance(const Effect& effect, OfxImageEffectHandle handle);

    OfxStatus perform(const std::string& action, const Properties& in, const Properties& out);

private:
    friend class Rendering;

    static Scale scaleOf(const Properties& in);

    OfxStatus render(const Properties& in);
    OfxStatus isIdentity(const Properties& in, const Properties& out);
    OfxStatus regionsOfInterest(const Properties& in, const Properties& out) const;
    OfxStatus framesNeeded(const Properties& in, const Properties& out) const;

    /// Gives a chain the values of a time.
    void set(const ChainPool::Lease& chain, OfxTime time, const Scale& scale) const;

    Properties sourceClip() const;
    ClipRange sourceRange() const;
    VireoTime moment(OfxTime time, std::int32_t interlacing) const;

    const Effect& effect_;
    const Host& host_;
    const OfxImageEffectHandle handle_;
    OfxImageClipHandle source_ = nullptr, output_ = nullptr;
    std::vector<OfxParamHandle> parameters_;
    OfxParamHandle mix_ = nullptr;
    ChainPool chains_;
    std::atomic<bool> hasMessage_ = false;
};

}  // namespace openfx

#endif
