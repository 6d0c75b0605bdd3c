// SPDX-License-Identifier: MIT
// The filters as effects: what the engine knows of them, with the names that hosts keep in projects.
#ifndef VIREO_BRIDGES_OPENFX_CATALOGUE_H
#define VIREO_BRIDGES_OPENFX_CATALOGUE_H

#include <vireo/vireo.h>

#include <memory>
#include <string>
#include <vector>

namespace openfx {

struct Parameter {
    std::string name;
    VireoParameter facts;
    std::vector<std::string> choices;
};

struct Filter {
    std::uint32_t index;
    std::string identifier;
    VireoFilter facts;
    std::vector<Parameter> parameters;
};

/// The parameter that every effect has beside its filter's own, in per cent.
inline constexpr char mixName[] = "Mix";

class Catalogue {
public:
    /// In the language that the host's process speaks, else in English. Throws std::runtime_error.
    Catalogue();

    const VireoEngine* engine() const { return engine_.get(); }
    const std::vector<Filter>& filters() const { return filters_; }
    const Parameter& mix() const { return mix_; }

private:
    std::unique_ptr<VireoEngine, decltype(&vireoClose)> engine_{nullptr, vireoClose};
    std::vector<Filter> filters_;
    std::unique_ptr<char, decltype(&vireoFree)> mixLabel_{nullptr, vireoFree};
    Parameter mix_{mixName, {}, {}};
};

}  // namespace openfx

#endif
