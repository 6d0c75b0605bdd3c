// SPDX-License-Identifier: MIT
#ifndef VIREO_BRIDGES_OPENFX_RENDERING_H
#define VIREO_BRIDGES_OPENFX_RENDERING_H

#include "bridges/openfx/instance.h"

#include <thread>

namespace openfx {

/// One render action.
class Rendering {
public:
    /// Throws Refusal where the images are not of a kind that was asked for.
    Rendering(Instance& instance, const Properties& in);

    void run();

private:
    std::int32_t interlacing() const;
    void renderPicture();

    /// Renders into a frame of the picture's size.
    void renderInto(VireoFrame& result);

    /// Fills the window from a picture; without one it is cleared.
    void fillWindow(const VireoFrame* picture) const;

    static std::int32_t earlierFrame(void* user, std::int64_t frame, const VireoFrame* target,
                                     VireoTime* time);
    static std::int32_t isCancelled(void* user);

    Instance& instance_;
    const OfxTime time_;
    const Scale scale_;
    const std::string field_;
    const Image target_, source_;
    const OfxRectI window_, picture_;
    const std::thread::id thread_ = std::this_thread::get_id();
};

}  // namespace openfx

#endif
