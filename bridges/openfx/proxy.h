// SPDX-License-Identifier: MIT
// Small pictures made large for filters that count in pixels, and small again.
#ifndef VIREO_BRIDGES_OPENFX_PROXY_H
#define VIREO_BRIDGES_OPENFX_PROXY_H

#include <vireo/vireo.h>

#include <cstdint>
#include <vector>

namespace openfx {

/// A picture of a larger size whose pixels repeat those of `small`.
class Enlarged {
public:
    Enlarged(const VireoFrame& small, int width, int height);

    const VireoFrame& frame() const { return frame_; }

private:
    VireoFrame frame_;
    std::vector<std::uint8_t> pixels_;
};

/// Each pixel of `small` becomes the mean of those that repeat it in a picture of `large`'s size.
void reduce(const VireoFrame& large, const VireoFrame& small);

}  // namespace openfx

#endif
