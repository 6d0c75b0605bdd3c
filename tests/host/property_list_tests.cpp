// SPDX-License-Identifier: MIT
// The module's property lists, byte for byte and as the reader sees them, in a file beside this one, and what
// the reader makes of damage.
#include "framework/module_resources.h"
#include "host/hosting/property_list.h"
#include "tests/support/filter_under_test.h"
#include "tests/support/golden_file.h"

#include <array>
#include <cmath>
#include <sstream>

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes resource(std::uint32_t id) {
    std::size_t size = 0;
    const void* const bytes = LoadModuleResource(u"PiPL", static_cast<std::uint16_t>(id), &size);
    if (bytes == nullptr) throw std::runtime_error("no property list " + std::to_string(id));
    const auto* const first = static_cast<const std::uint8_t*>(bytes);
    const Bytes copy(first, first + size);
    ReleaseModuleResource(bytes);
    return copy;
}

/// What hosts are handed: the resource without its first two bytes.
Bytes handedOut(std::uint32_t id) {
    const Bytes bytes = resource(id);
    return {bytes.begin() + 2, bytes.end()};
}

std::string described(const hosting::PropertyList& list) {
    std::ostringstream text;
    text << list.nameKey << ", " << list.name << ", " << list.matchName << ", " << list.categoryKey << ", "
         << list.category << ", record of " << list.recordSize();
    for (const hosting::Parameter& parameter : list.parameters) {
        constexpr const char* kinds[] = {"number", "boolean", "color"};
        text << " | " << parameter.key << ", " << parameter.name << ", "
             << kinds[static_cast<int>(parameter.kind)] << ", " << parameter.minimum << " to "
             << parameter.maximum << ", shown " << parameter.displayMinimum << " to "
             << parameter.displayMaximum << ", " << parameter.size << " at " << parameter.offset;
    }
    return text.str();
}

TEST(PropertyLists, StandAsOldHostsKnowThem) {
    GoldenLines lines;
    for (const std::uint32_t id : filterIds()) {
        Checksum checksum;
        checksum.add(resource(id));
        lines[std::to_string(id)] = checksum.text() + " of " + std::to_string(resource(id).size()) +
                                    " bytes, " + described(hosting::readPropertyList(handedOut(id)));
    }
    expectGolden(VIREO_PROPERTY_LISTS,
                 "# SPDX-License-Identifier: MIT\n"
                 "# CRC-32 of each filter's property list and what it says; "
                 "tests/host/property_list_tests.cpp writes this file.\n",
                 lines);
}

TEST(PropertyListReader, FallsBackToTheTextBehindTheKey) {
    EXPECT_EQ(hosting::defaultText("$$$/A/B=Text = text"), "Text = text");
    for (const std::string text : {"$$$/A/B", "Obsolete=x", ""}) EXPECT_EQ(hosting::defaultText(text), text);
}

/// True when the reader took the bytes. An error other than the reader's own fails the test.
bool parses(std::span<const std::uint8_t> bytes) {
    try {
        const hosting::PropertyList list = hosting::readPropertyList(bytes);
        EXPECT_FALSE(list.name.empty());
        return true;
    } catch (const hosting::PropertyListError& error) {
        EXPECT_STRNE(error.what(), "");
        return false;
    }
}

TEST(PropertyListReader, RejectsEveryTruncationAndEveryTail) {
    for (const std::uint32_t id : filterIds()) {
        Bytes whole = handedOut(id);
        for (std::size_t size = 0; size < whole.size(); ++size) {
            // A block of its own, so that the address sanitizer sees a byte too many read.
            const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            ASSERT_FALSE(parses(cut)) << id << " cut to " << size;
        }
        for (const std::size_t tail : {1, 4, 20, 200}) {
            whole.resize(whole.size() + tail);
            EXPECT_FALSE(parses(whole)) << id << " with " << tail << " more";
        }
    }
}

TEST(PropertyListReader, SurvivesEveryDamagedByte) {
    int taken[2]{};
    for (const std::uint32_t id : filterIds()) {
        Bytes bytes = handedOut(id);
        for (std::uint8_t& byte : bytes) {
            const std::uint8_t original = byte;
            for (const int value : {0x00, 0xFF, ~original, original ^ 0x80, original + 1}) {
                byte = static_cast<std::uint8_t>(value);
                ++taken[parses(bytes)];
            }
            byte = original;
        }
    }
    EXPECT_TRUE(taken[0] > 0 && taken[1] > 0);
}

TEST(PropertyListReader, RefusesWhatDoesNotAddUp) {
    // Solarize with one thing written over, counted from the start of what hosts are handed.
    const auto expectRefused = [](const char* what, std::size_t offset, const auto&... values) {
        const auto refuse = [&](const auto& value) {
            Bytes bytes = handedOut(10049);
            std::memcpy(bytes.data() + offset, &value, sizeof value);
            EXPECT_FALSE(parses(bytes)) << what << ' ' << testing::PrintToString(value);
        };
        (refuse(values), ...);
    };
    const double infinite = HUGE_VAL, none = std::nan("");
    expectRefused("version", 0, 1, 0x80000000, 0xFFFFFFFF);
    expectRefused("count", 4, 0, 8, 10, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF);
    expectRefused("vendor", 8, 0);
    for (const std::size_t property : {20, 352})
        expectRefused("length", property, 0, 1, 163, 165, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFC, 0xFFFFFFFF);
    expectRefused("kind", 24, 0x56417564);
    expectRefused("length of the name", 44, char{0}, char{48}, '\xFF');
    expectRefused("parameters announced", 288, 0, 2, 0xFFFFFFFF);
    expectRefused("id of the parameter", 348, 1);
    std::array<char, 96> endless;
    endless.fill('x');
    expectRefused("a text that does not end", 356, endless);
    expectRefused("number of the parameter", 452, 0, 2, 0xFFFFFFFF);
    expectRefused("a colour or a check box of two bytes", 456, 12, 13);
    expectRefused("minimum", 464, 255.0, infinite, -infinite, none);
    expectRefused("size of the value", 500, 0, 3, 8, 0x80000000, 0xFFFFFFFF);
}

}  // namespace
