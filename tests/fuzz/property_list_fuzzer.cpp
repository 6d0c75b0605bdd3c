// SPDX-License-Identifier: MIT
// Any bytes are a property list whose parameters lie side by side, or an error.
#include "host/vrm/property_list.h"
#include "tests/fuzz/require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    VRM::PropertyList list;
    try {
        list = VRM::readPropertyList({data, size});
    } catch (const VRM::PropertyListError& error) {
        REQUIRE(*error.what() != '\0');
        return 0;
    }
    std::size_t offset = 0;
    for (const VRM::Parameter& parameter : list.parameters) {
        REQUIRE(parameter.offset == offset);
        REQUIRE(parameter.minimum <= parameter.maximum);
        offset += static_cast<std::size_t>(parameter.size);
    }
    REQUIRE(list.recordSize() == offset);
    REQUIRE(!list.name.empty());
    return 0;
}
