// SPDX-License-Identifier: MIT
// Any text is a settings file that survives being saved and loaded, or one sentence about what is wrong.
#include "tests/fuzz/settings_round_trip.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    requireRoundTrip([text = std::string_view(reinterpret_cast<const char*>(data), size)] {
        return vireo::parseSettings(linkedCatalogue(), "input", text);
    });
    return 0;
}
