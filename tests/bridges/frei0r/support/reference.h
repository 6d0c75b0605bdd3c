// SPDX-License-Identifier: GPL-2.0-or-later
// The engine's own pictures, which plug-ins are held against.
#ifndef VIREO_TESTS_BRIDGES_FREI0R_SUPPORT_REFERENCE_H
#define VIREO_TESTS_BRIDGES_FREI0R_SUPPORT_REFERENCE_H

#include <vireo/vireo.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct PictureSize {
    unsigned width;
    unsigned height;
};

/// Pixels of one frame, rows from the top.
using Picture = std::vector<std::uint32_t>;

/// Frames of random pixels.
std::vector<Picture> randomClip(PictureSize size, std::size_t frames);

/// The filter of a plug-in, in an engine of its own.
class Reference {
public:
    /// By the plug-in's name, "Vireo Levels".
    explicit Reference(const std::string& pluginName);

    std::vector<VireoParameter> parameters() const;
    void set(int parameter, std::int64_t value);

    /// Why frames of a size are not rendered; empty where they are.
    std::string refusal(PictureSize size) const;

    /// Frame `number` of a clip of so many frames, 0 where unknown.
    Picture frame(const std::vector<Picture>& clip, PictureSize size, std::size_t number,
                  int clipLength = 0) const;

private:
    template <class Handle>
    using Owned = std::unique_ptr<Handle, void (*)(Handle*)>;

    Owned<VireoEngine> engine_{nullptr, vireoClose};
    Owned<VireoChain> chain_{nullptr, vireoChainClose};
    std::uint32_t filter_ = 0;
};

#endif
