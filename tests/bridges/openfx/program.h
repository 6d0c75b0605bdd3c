// SPDX-License-Identifier: MIT
// The command line's pictures.
#ifndef VIREO_TESTS_BRIDGES_OPENFX_PROGRAM_H
#define VIREO_TESTS_BRIDGES_OPENFX_PROGRAM_H

#include "tests/bridges/openfx/host/test_image.h"

#include <string>
#include <vector>

namespace openfx::test {

class Program {
public:
    /// One of the sample photographs.
    static Plain read(const std::string& photograph);

    /// What `vireo render -f chain` makes of a clip, in 8 bits.
    static std::vector<Plain> render(const std::vector<Plain>& clip, const std::string& chain);
};

}  // namespace openfx::test

#endif
