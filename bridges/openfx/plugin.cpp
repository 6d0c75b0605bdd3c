// SPDX-License-Identifier: MIT
// What hosts find in the library. No exception leaves it.
#include "bridges/openfx/effect.h"

#include "bridges/openfx/chain_pool.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <exception>
#include <new>
#include <utility>

namespace openfx {
namespace {

/// Every effect has an entry point of its own, which tells it from the others.
constexpr std::size_t mostEffects = 64;

struct Bundle {
    Catalogue catalogue;
    std::vector<Effect> effects;
    std::vector<OfxPlugin> plugins;

    Bundle();
};

/// Null where the engine does not find its module.
Bundle* bundle() {
    static const std::unique_ptr<Bundle> made = []() -> std::unique_ptr<Bundle> {
        try {
            return std::make_unique<Bundle>();
        } catch (const std::exception& error) {
            std::fprintf(stderr, "Vireo.ofx: %s.\n", error.what());
            return nullptr;
        }
    }();
    return made.get();
}

OfxStatus perform(Effect& effect, const char* action, const void* handle, OfxPropertySetHandle in,
                  OfxPropertySetHandle out) {
    try {
        return action == nullptr ? ofx::Failed : effect.perform(action, handle, in, out);
    } catch (const std::bad_alloc&) {
        return ofx::OutOfMemory;
    } catch (...) {
        return ofx::Failed;
    }
}

struct EntryPoints {
    void (*setHost)(OfxHost* host);
    OfxPluginEntryPoint* main;
};

template <std::size_t index>
constexpr EntryPoints entryPoints{
    [](OfxHost* host) { bundle()->effects[index].setHost(host); },
    [](const char* action, const void* handle, OfxPropertySetHandle in, OfxPropertySetHandle out) {
        return perform(bundle()->effects[index], action, handle, in, out);
    }};

template <std::size_t... indices>
constexpr std::array<EntryPoints, sizeof...(indices)> entryPointTable(std::index_sequence<indices...>) {
    return {entryPoints<indices>...};
}

unsigned number(const char*& text) {
    unsigned value = 0;
    text = std::from_chars(text, text + std::char_traits<char>::length(text), value).ptr;
    if (*text == '.') ++text;
    return value;
}

Bundle::Bundle() {
    static constexpr auto table = entryPointTable(std::make_index_sequence<mostEffects>());
    const char* version = vireoVersion();
    const unsigned major = number(version), minor = number(version);
    const std::size_t count = std::min(catalogue.filters().size(), mostEffects);
    for (std::size_t i = 0; i < count; ++i) {
        const Filter& filter = catalogue.filters()[i];
        effects.emplace_back(catalogue, filter);
        plugins.push_back({ofx::imageEffectApi, 1, filter.identifier.c_str(), major, minor, table[i].setHost,
                           table[i].main});
    }
}

}  // namespace
}  // namespace openfx

VIREO_OFX_EXPORT int OfxGetNumberOfPlugins(void) {
    const auto* const bundle = openfx::bundle();
    return bundle == nullptr ? 0 : static_cast<int>(bundle->plugins.size());
}

VIREO_OFX_EXPORT OfxPlugin* OfxGetPlugin(int nth) {
    auto* const bundle = openfx::bundle();
    const bool isOne =
        bundle != nullptr && nth >= 0 && static_cast<std::size_t>(nth) < bundle->plugins.size();
    return isOne ? &bundle->plugins[static_cast<std::size_t>(nth)] : nullptr;
}

VIREO_OFX_EXPORT OfxStatus OfxSetHost(const OfxHost*) {
    return openfx::bundle() == nullptr ? ofx::Failed : ofx::Ok;
}
