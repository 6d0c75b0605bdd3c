// SPDX-License-Identifier: MIT
// Any text is a settings file that survives being saved and loaded, or one sentence about what is wrong.
#include "tests/fuzz/settings_round_trip.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<vireo::FilterSettings> chain;
    try {
        chain = vireo::parseSettings(linkedCatalogue(), "input", {reinterpret_cast<const char*>(data), size});
    } catch (const vireo::Error& error) {
        REQUIRE(*error.what() != '\0');
        return 0;
    }
    requireRoundTrip(chain);
    return 0;
}
