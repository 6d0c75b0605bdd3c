// SPDX-License-Identifier: MIT
// The engine as the services share it, and what they are called.
#ifndef VIREO_MLT_ENGINE_H
#define VIREO_MLT_ENGINE_H

#include "vireo/vireo.h"

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace vireo::mlt {

/// The service of a whole chain; those of the filters are called "vireo.solarize".
constexpr const char* chainService = "vireo";

struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Throws what the thread's last call of the engine failed with.
void check(VireoStatus status);

struct Closer {
    void operator()(VireoEngine* engine) const { vireoClose(engine); }
    void operator()(VireoChain* chain) const { vireoChainClose(chain); }
};
using Engine = std::unique_ptr<VireoEngine, Closer>;
using Chain = std::unique_ptr<VireoChain, Closer>;

Engine openEngine(const char* language);

/// Zeroes but for its size, as the engine wants to be given it.
template <class Struct>
Struct sized() {
    Struct made{};
    made.structSize = sizeof made;
    return made;
}

VireoFilter describe(const VireoEngine* engine, std::uint32_t filter);
VireoParameter describe(const VireoEngine* engine, std::uint32_t filter, std::uint32_t parameter);
std::vector<std::string> choices(const VireoEngine* engine, std::uint32_t filter, std::uint32_t parameter);

/// Of files and services: "lens-distortion".
std::string dashedName(const VireoFilter& filter);
std::string serviceName(const VireoFilter& filter);

/// The filter of a service; none for the chain's.
std::optional<std::uint32_t> filterOf(const VireoEngine* engine, std::string_view service);

}  // namespace vireo::mlt

#endif
