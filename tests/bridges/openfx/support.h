// SPDX-License-Identifier: MIT
#ifndef VIREO_TESTS_BRIDGES_OPENFX_SUPPORT_H
#define VIREO_TESTS_BRIDGES_OPENFX_SUPPORT_H

#include "tests/bridges/openfx/host/test_host.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace openfx::test {

/// The bundle of the build, loaded once.
const LoadedBundle& bundle();

/// A plug-in by what follows "vireo." in its identifier.
OfxPlugin& pluginNamed(const std::string& key);

/// What follows "vireo." in all of them.
std::vector<std::string> effectKeys();

/// Every test ends without a fault against the interface.
class OpenFx : public testing::Test {
protected:
    void TearDown() override {
        for (const std::string& fault : PropertySet::faults()) ADD_FAILURE() << fault;
    }
};

/// The engine's own picture of the same filter.
class Reference {
public:
    explicit Reference(const OfxPlugin& plugin);

    const std::vector<VireoParameter>& parameters() const { return parameters_; }

    /// Sets a parameter here and in an instance, by its index; values are the engine's.
    void set(TestInstance& instance, std::size_t parameter, std::int64_t value);

    /// All of them, to numbers from their ranges.
    void setAtRandom(TestInstance& instance, std::uint32_t seed);

    /// The chain as `vireo render -f` takes it.
    std::string text() const;

    Plain render(std::vector<Plain> clip, std::size_t frame, int interlacing = 0, bool premultiplied = false,
                 double rate = 25) const;

private:
    std::unique_ptr<VireoChain, void (*)(VireoChain*)> chain_{nullptr, vireoChainClose};
    std::vector<VireoParameter> parameters_;
};

/// The name that the plug-in gives a parameter.
std::string scriptName(const VireoParameter& parameter);

}  // namespace openfx::test

#endif
