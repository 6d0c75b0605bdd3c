// SPDX-License-Identifier: MIT
#include "engine/catalogue/catalogue.h"
#include "engine/error.h"
#include "engine/text.h"
#include "tests/engine/support/fake_filters.h"

#include <gmock/gmock.h>

namespace vireo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(Names, MatchByAnyUnambiguousBeginning) {
    const std::vector<Names> things = {{"(RGB) Black"}, {"(R) Black"}, {"Red"}, {"Redder"}};
    EXPECT_THAT(matchName("rgb", things), ElementsAre(0));
    EXPECT_THAT(matchName(" R black ", things), ElementsAre(1));
    EXPECT_THAT(matchName("RED", things), ElementsAre(2));  // exact wins over a longer one
    EXPECT_THAT(matchName("re", things), ElementsAre(2, 3));
    EXPECT_THAT(matchName("r", things), ElementsAre(0, 1, 2, 3));
    EXPECT_THAT(matchName("black", things), ElementsAre());
    EXPECT_THAT(matchName("()", things), ElementsAre());
}

TEST(Names, AreOfferedByLikeness) {
    const std::vector<Names> things = {{"Solarize"}, {"Levels"}, {"Lens Distortion"}, {"Bend"}};
    EXPECT_EQ(nearestNames("Solarise", things).front(), "Solarize");
    EXPECT_EQ(nearestNames("lesn", things).front(), "Lens Distortion");
    EXPECT_EQ(nearestNames("levles", things).front(), "Levels");
    EXPECT_EQ(enumeration(nearestNames("x", things), "or").find(" or ") != std::string::npos, true);
}

TEST(Catalogue, FindsFiltersByAllTheirNames) {
    const Catalogue catalogue(test::fakeFilters());
    for (const char* name :
         {"Add Stamp", "adds", "stamp", "TEST Add Stamp", "testadds", "2", " add  STAMP "}) {
        EXPECT_EQ(catalogue.find(name).id, 2u) << name;
    }
    EXPECT_EQ(catalogue.find("deep copy 16").id, 4u);

    const auto messageFor = [&](const char* name) -> std::string {
        try {
            catalogue.find(name);
        } catch (const Error& error) {
            EXPECT_EQ(error.status(), 2);
            return error.what();
        }
        return "found";
    };
    EXPECT_EQ(messageFor("add"), "the filter \"add\" may be Add Value or Add Stamp");
    EXPECT_THAT(messageFor("Ehco"), HasSubstr("no filter \"Ehco\"; the nearest are Echo"));
    EXPECT_THAT(messageFor(""), HasSubstr("no filter"));
}

}  // namespace
}  // namespace vireo
