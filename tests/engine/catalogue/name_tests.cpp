// SPDX-License-Identifier: MIT
#include "engine/catalogue/names.h"

#include <gmock/gmock.h>

namespace vireo {
namespace {

using testing::ElementsAre;

TEST(Names, MatchByAnyUnambiguousBeginning) {
    const std::vector<Names> things = {{"(RGB) Black"}, {"(R) Black"}, {"Red"}, {"Redder", "Second"}};
    EXPECT_THAT(matchName("rgb", things), ElementsAre(0));
    EXPECT_THAT(matchName(" R  black ", things), ElementsAre(1));
    EXPECT_THAT(matchName("RED", things), ElementsAre(2));  // exact wins over a longer one
    EXPECT_THAT(matchName("re", things), ElementsAre(2, 3));
    EXPECT_THAT(matchName("sec", things), ElementsAre(3));
    for (const char* none : {"black", "()", ""}) EXPECT_THAT(matchName(none, things), ElementsAre()) << none;
}

}  // namespace
}  // namespace vireo
