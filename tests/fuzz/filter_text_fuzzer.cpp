// SPDX-License-Identifier: MIT
// A chain as the command line describes it, a line each: the text of a -f, or "hex:" and the bytes of the
// settings of the filter before.
#include "tests/fuzz/settings_round_trip.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    requireRoundTrip([text = std::string_view(reinterpret_cast<const char*>(data), size)]() mutable {
        std::vector<vireo::FilterSettings> chain;
        while (!text.empty()) {
            const std::string line(text.substr(0, text.find('\n')));
            text.remove_prefix(std::min(line.size() + 1, text.size()));
            if (!line.starts_with("hex:")) {
                chain.push_back(vireo::parseFilterText(linkedCatalogue(), line));
            } else if (!chain.empty()) {
                chain.back().setBytes(vireo::readSettingsBytes(line));
                chain.back().assignFromBytes();
            }
        }
        return chain;
    });
    return 0;
}
