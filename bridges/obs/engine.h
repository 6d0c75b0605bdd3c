// SPDX-License-Identifier: GPL-2.0-or-later
// The engine that all filters of the process share.
#ifndef VIREO_OBS_ENGINE_H
#define VIREO_OBS_ENGINE_H

#include "vireo/vireo.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vireo::obs {

struct Close {
    void operator()(VireoChain* chain) const { vireoChainClose(chain); }
    void operator()(VireoStream* stream) const { vireoStreamClose(stream); }
};

using Chain = std::unique_ptr<VireoChain, Close>;
using Stream = std::unique_ptr<VireoStream, Close>;

/// Opens the engine with names in the language of a locale such as "de-DE", or English ones. Where it fails,
/// vireoLastError() says why.
bool openEngine(const std::string& locale);
void closeEngine();

/// Between the two.
const VireoEngine* engine();

VireoFilter describeFilter(std::uint32_t filter);
VireoParameter describeParameter(std::uint32_t filter, std::uint32_t parameter);
std::string describeChoice(std::uint32_t filter, std::uint32_t parameter, std::uint32_t choice);

struct Preset {
    std::string name;
    std::string description;
};

/// Those that there are now.
std::vector<Preset> presets();

}  // namespace vireo::obs

#endif
