// SPDX-License-Identifier: MIT
// Any bytes are a property list whose parameters lie side by side, or an error.
#include "host/hosting/property_list.h"
#include "tests/fuzz/require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto list = readOrRefused<hosting::PropertyListError>([&] {
        return hosting::readPropertyList({data, size});
    });
    if (!list) return 0;
    std::size_t offset = 0;
    for (const hosting::Parameter& parameter : list->parameters) {
        REQUIRE(parameter.offset == offset);
        REQUIRE(parameter.minimum <= parameter.maximum);
        offset += static_cast<std::size_t>(parameter.size);
    }
    REQUIRE(list->recordSize() == offset);
    REQUIRE(!list->name.empty());
    return 0;
}
