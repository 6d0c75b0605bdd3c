// SPDX-License-Identifier: MIT
// A chain in the words of other programs, which render it with the frei0r plug-ins or with elements of their
// own.
#ifndef VIREO_APP_COMMANDS_EXPORTS_H
#define VIREO_APP_COMMANDS_EXPORTS_H

#include "app/commands/exported_chain.h"

#include <string>
#include <vector>

namespace vireo {

struct Export {
    std::string text;
    std::string commands;      ///< What the text reads from a file of its own; empty where nothing changes.
    bool knowsFields = false;  ///< Whether interlaced frames are rendered as their fields there.
    std::vector<std::string> warnings;  ///< Sentences on what will look different there.
};

/// A filter graph for -vf. Frames are those of the whole clip. `commandFile` is what the graph will read the
/// commands from. Throws Error of wrong usage where it is needed and empty.
Export exportForFfmpeg(const std::vector<ExportedFilter>& filters, const ExportedClip& clip,
                       const std::string& commandFile);

/// A playlist of the clip with its filters, as XML. Throws Error of wrong usage for what MLT cannot be told.
Export exportForMlt(const std::vector<ExportedFilter>& filters, const ExportedClip& clip,
                    const std::string& clipFile);

/// An element for gst-launch-1.0 that renders the chain.
Export exportForGstreamer(const std::vector<FilterSettings>& chain, const ExportedClip& clip);

/// The same as frei0r elements. Throws Error of wrong usage for what they cannot be told.
Export exportForFrei0rInGstreamer(const std::vector<ExportedFilter>& filters, const ExportedClip& clip);

}  // namespace vireo

#endif
