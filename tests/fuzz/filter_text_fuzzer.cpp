// SPDX-License-Identifier: MIT
// A chain as the command line describes it, an option a line: the text of a -f, or "hex:" and the bytes of
// the settings of the filter before.
#include "app/commands/chain_options.h"
#include "tests/fuzz/settings_round_trip.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using Kind = vireo::SettingsOption::Kind;
    vireo::RenderOptions options;
    std::string_view text(reinterpret_cast<const char*>(data), size);
    while (!text.empty()) {
        const std::string line(text.substr(0, text.find('\n')));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        options.settings.push_back({line.starts_with("hex:") ? Kind::SettingsBytes : Kind::Filter, line});
    }
    options.saveSettings = "saved";

    vireo::ChainOptions chain;
    try {
        chain = vireo::readChain(linkedCatalogue(), options);
    } catch (const vireo::RenderError& error) {
        REQUIRE(*error.what() != '\0');
        return 0;
    }
    REQUIRE(chain.settingsText == vireo::settingsText(chain.filters));
    if (!chain.filters.empty()) requireRoundTrip(chain.filters);
    return 0;
}
