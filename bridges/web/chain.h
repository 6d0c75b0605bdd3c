// SPDX-License-Identifier: MIT
#ifndef VIREO_BRIDGES_WEB_CHAIN_H
#define VIREO_BRIDGES_WEB_CHAIN_H

#include "bridges/web/picture.h"
#include "host/vrm/filter_instance.h"
#include "host/vrm/meta_plugin.h"

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace web {

/// A frame of a clip.
struct Moment {
    std::int32_t frame;   ///< From 0.
    std::int32_t frames;  ///< Of the whole clip; 0 where unknown.
};

/// Filters one after another, each with its values. A filter that looks back gets earlier frames as the
/// filters before it make them, with the values that they have now.
class Chain {
public:
    /// The chain's input at an earlier frame. May throw.
    using InputAt = std::function<PicturePtr(std::int32_t frame)>;

    /// `values` are the parameters', in the list's order; `mix` is per cent of the filter's result. The
    /// filter outlives the chain. Throws std::runtime_error with one sentence for a value out of range, and
    /// std::bad_alloc.
    void add(const VRM::Filter& filter, std::span<const double> values, double mix);

    /// Throws std::exception, with one sentence where a filter does not take pictures of the input's size.
    PicturePtr render(const PicturePtr& input, const Moment& moment, const InputAt& inputAt) const;

private:
    struct Stage {
        const VRM::Filter* filter;
        VRM::FilterInstance instance;
        int mix;
    };
    struct Clip;
    class EarlierFrames;

    PicturePtr output(std::size_t stages, std::int32_t frame, const Clip& clip) const;

    std::vector<Stage> stages_;
};

}  // namespace web

#endif
