// SPDX-License-Identifier: MIT
// The module's property lists, byte for byte and as the reader sees them, and what the reader makes of
// damage.
#include "framework/module_resources.h"
#include "host/hosting/property_list.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <span>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

struct ExpectedFilter {
    std::uint16_t id;
    const char* name;
    const char* category;
    const char* matchName;
    std::size_t parameters;
    std::size_t recordSize;
};

constexpr ExpectedFilter expectedFilters[] = {
    {10001, "Alpha Glow", "Stylize", "QULN Alpha Glow", 6, 18},
    {10002, "Antialias", "Obsolete", "QULN Antialias", 0, 0},
    {10004, "Bend", "Obsolete", "QULN Bend", 11, 24},
    {10006, "Black & White", "Image Control", "QULN Black & White", 0, 0},
    {10010, "Camera Blur", "Blur & Sharpen", "QULN Camera Blur", 1, 2},
    {10011, "Camera View", "Obsolete", "QULN Camera View", 12, 34},
    {10013, "Color Balance (RGB)", "Image Control", "QULN Color Balance", 3, 6},
    {10015, "Color Pass", "Image Control", "QULN Color Pass", 3, 7},
    {10016, "Color Replace", "Image Control", "QULN Color Replace", 4, 11},
    {10017, "Convolution Kernel", "Adjust", "QULN Convolution Kernel New", 12, 23},
    {10020, "Edge Feather", "Transform", "QULN Edge Feather", 1, 2},
    {10022, "Extract", "Adjust", "QULN Extract", 4, 7},
    {10026, "Gamma Correction", "Image Control", "QULN Gamma Correction", 1, 2},
    {10029, "Ghosting", "Obsolete", "QULN Ghosting", 0, 0},
    {10030, "Horizontal Flip", "Transform", "QULN Horizontal Flip", 0, 0},
    {10031, "Horizontal Hold", "Obsolete", "QULN Horizontal Hold", 2, 8},
    {10034, "Lens Distortion", "Distort", "QULN Lens Distortion", 7, 15},
    {10035, "Levels", "Adjust", "QULN Levels", 20, 40},
    {10042, "Replicate", "Stylize", "QULN Replicate", 1, 2},
    {10049, "Solarize", "Stylize", "QULN Solarize", 1, 2},
    {10052, "Vertical Flip", "Transform", "QULN Vertical Flip", 0, 0},
    {10053, "Vertical Hold", "Obsolete", "QULN Vertical Hold", 0, 0},
};

Bytes resource(std::uint16_t id) {
    std::size_t size = 0;
    const void* bytes = LoadModuleResource(u"PiPL", id, &size);
    if (bytes == nullptr) {
        ADD_FAILURE() << "no property list " << id;
        return {};
    }
    const auto* first = static_cast<const std::uint8_t*>(bytes);
    Bytes copy(first, first + size);
    ReleaseModuleResource(bytes);
    return copy;
}

/// What hosts are handed: the resource without its first two bytes.
Bytes handedOut(std::uint16_t id) {
    const Bytes whole = resource(id);
    return whole.size() < 2 ? Bytes() : Bytes(whole.begin() + 2, whole.end());
}

Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

Bytes word(std::uint32_t value) {
    Bytes bytes(4);
    std::memcpy(bytes.data(), &value, 4);
    return bytes;
}

Bytes real(double value) {
    Bytes bytes(8);
    std::memcpy(bytes.data(), &value, 8);
    return bytes;
}

Bytes text(const std::string& characters) { return {characters.begin(), characters.end()}; }

/// The text in a field of `size` bytes, filled up with zeros.
Bytes field(const std::string& characters, std::size_t size) {
    Bytes bytes = text(characters);
    bytes.resize(size);
    return bytes;
}

/// The head of a property. Codes stand in the file with their characters reversed.
Bytes head(const std::string& reversedKey, std::uint32_t id, std::uint32_t length) {
    return text("XNLQ" + reversedKey) + word(id) + word(length);
}

/// A parameter: numbers are its number, control and value type; the bounds; the flags and the value's size.
Bytes parameter(const std::string& key, const std::vector<std::uint32_t>& numbers,
                const std::vector<double>& bounds, std::uint32_t flags, std::uint32_t size) {
    Bytes bytes = head("RAPa", numbers[0] - 1, 164) + field("$$$/Strata/VireoFilters/" + key, 96);
    for (const std::uint32_t number : numbers) bytes = bytes + word(number);
    for (const double bound : bounds) bytes = bytes + real(bound);
    return bytes + word(flags) + word(size) + Bytes(16);
}

bool holds(const Bytes& whole, const Bytes& part) {
    return std::search(whole.begin(), whole.end(), part.begin(), part.end()) != whole.end();
}

TEST(PropertyListResources, SolarizeIsExact) {
    const Bytes expected = Bytes{1, 0} + word(0) + word(9)      //
                           + head("dnik", 0, 4) + text("tlFV")  //
                           + head("eman", 0, 48) +
                           field("\x2e$$$/Strata/VireoFilters/Solarize/Name=Solarize", 48)                //
                           + head("ANMe", 0, 16) + field("\x0dQULN Solarize", 16)                         //
                           + head("gtac", 0, 56)                                                          //
                           + field("\x35$$$/Strata/FiltersAndEffects/Category/Stylize=Stylize", 56)       //
                           + head("RVPe", 0, 4) + Bytes{2, 0, 3, 0}                                       //
                           + head("RVSe", 0, 4) + word(3)                                                 //
                           + head("REVe", 0, 4) + Bytes{0x00, 0x06, 0x30, 0x00}                           //
                           + head("TLFa", 0, 68) + word(1) + word(2) + word(0) + word(0x1020C) + word(1)  //
                           + field("QULN Solarize", 48)                                                   //
                           + parameter("Solarize/Threshold=Threshold", {1, 2, 2}, {0, 254, 0, 100}, 8, 2);
    EXPECT_EQ(expected.size(), 522u);
    EXPECT_EQ(resource(10049), expected);
}

TEST(PropertyListResources, VerticalHoldDescribesItselfWithoutParameters) {
    const Bytes expected = Bytes{1, 0} + word(0) + word(9)      //
                           + head("dnik", 0, 4) + text("tlFV")  //
                           + head("eman", 0, 60) +
                           field("\x37$$$/Strata/VireoFilters/VerticalHold/Name=Vertical Hold", 60)  //
                           + head("ANMe", 0, 20) + field("\x12QULN Vertical Hold", 20)               //
                           + head("gtac", 0, 12) + field("\x08Obsolete", 12)                         //
                           + head("68xw", 0, 12) + field("xFilter", 12)                              //
                           + head("RVPe", 0, 4) + Bytes{2, 0, 1, 0}                                  //
                           + head("RVSe", 0, 4) + word(3)                                            //
                           + head("REVe", 0, 4) + Bytes{0x00, 0x00, 0x30, 0x00}                      //
                           + head("TLFa", 0, 68) + word(1) + word(1) + word(0) + word(13) + word(0)  //
                           + field("QULN Vertical Hold", 48);
    EXPECT_EQ(resource(10053), expected);
}

TEST(PropertyListResources, OddPropertiesStandAsOldHostsKnowThem) {
    const struct {
        std::uint16_t id;
        Bytes part;
    } cases[] = {
        {10001, head("TLFa", 0, 68) + word(1) + word(2) + word(0) + word(0x1020C) + word(6)},
        {10001, head("ANMe", 0, 20) + field("\x0fQULN Alpha Glow", 20)},
        {10001, parameter("AlphaGlow/Brightness=Brightness", {2, 3, 2}, {0, 255, 0, 255}, 8, 4)},
        {10001, parameter("AlphaGlow/EndColor=End Color", {4, 12, 5}, {0, 0, 0, 0}, 8, 4)},
        {10001, parameter("AlphaGlow/FadeOut=Fade Out", {6, 13, 8}, {0, 0, 0, 0}, 0, 1)},
        {10004, head("TLFa", 0, 68) + word(1) + word(2) + word(0) + word(0x1000C) + word(11)},
        {10004, parameter("Bend/VerticalSource=Vertical Source", {7, 2, 0}, {0, 3, 0, 3}, 0, 2)},
        {10004, parameter("Bend/HorizontalRate=Horizontal Rate", {4, 2, 2}, {2, 16, 0, 100}, 8, 2)},
        {10004, parameter("Bend/FillColor=Fill Color", {11, 6, 0}, {0, 0, 0, 0}, 8, 4)},
        {10006, field("\x38$$$/Strata/VireoFilters/BlackAndWhite/Name=Black & White", 60)},
        {10006, head("RVPe", 0, 4) + Bytes{2, 0, 1, 0}},
        {10010, text("$$$/Strata/FiltersAndEffects/Category/BlurAndSharpen=Blur & Sharpen")},
        {10011, parameter("CameraView/Zoom=Zoom", {6, 2, 2}, {40, 400, 4, 40}, 8, 2)},
        {10011, parameter("CameraView/VrRect4=VrRect 4", {11, 3, 0}, {0, 1000, 0, 1000}, 0, 4)},
        {10011, parameter("CameraView/FillAlphaColor=Fill Alpha Color", {12, 2, 0}, {0, 2, 0, 2}, 0, 2)},
        {10013, text("$$$/Strata/VireoFilters/ColorBalance/Name=Color Balance (RGB)")},
        {10017, parameter("ConvolutionKernel/ProcessAlpha=Process Alpha", {12, 13, 8}, {0, 0, 0, 0}, 8, 1)},
        {10017, parameter("ConvolutionKernel/Scale=Scale", {11, 2, 2}, {-32768, 32767, -32768, 32767}, 8, 2)},
        {10031,
         parameter("HorizontalHold/Offset=Offset", {1, 3, 2}, {-1048576, 1048576, 0, 500}, 8, 4) +
             parameter("HorizontalHold/EndStep=End Step", {2, 3, 0}, {-1048576, 1048576, 0, 500}, 8, 4)},
        {10034, parameter("LensDistort/FillAlpha=Fill Alpha", {6, 13, 8}, {0, 0, 0, 0}, 8, 1)},
        {10035,
         parameter("Levels/RGBBlackInputLevel=(RGB) Black Input Level", {1, 2, 2}, {0, 255, 0, 255}, 8, 2)},
        {10035, parameter("Levels/BGamma=(B) Gamma", {20, 2, 2}, {0, 1000, 0, 1000}, 8, 2)},
    };
    for (const auto& [id, part] : cases) {
        EXPECT_TRUE(holds(resource(id), part)) << id << ": " << std::string(part.begin(), part.end());
    }
}

TEST(PropertyListResources, OnlyFiltersWithParametersCarryADescriptor) {
    for (const ExpectedFilter& filter : expectedFilters) {
        const bool described = holds(resource(filter.id), head("TLFa", 0, 68));
        EXPECT_EQ(described, filter.parameters > 0 || filter.id == 10053) << filter.name;
    }
}

TEST(PropertyListReader, ReadsEveryListOfTheModule) {
    for (const ExpectedFilter& filter : expectedFilters) {
        SCOPED_TRACE(filter.name);
        const hosting::PropertyList list = hosting::readPropertyList(handedOut(filter.id));
        EXPECT_EQ(list.name, filter.name);
        EXPECT_EQ(list.category, filter.category);
        EXPECT_EQ(list.matchName, filter.matchName);
        EXPECT_EQ(list.parameters.size(), filter.parameters);
        EXPECT_EQ(list.recordSize(), filter.recordSize);
        EXPECT_TRUE(list.nameKey.starts_with("$$$/Strata/VireoFilters/"));
    }
}

TEST(PropertyListReader, LaysParametersOutOneBehindTheOther) {
    const hosting::PropertyList list = hosting::readPropertyList(handedOut(10015));
    ASSERT_EQ(list.parameters.size(), 3u);
    EXPECT_EQ(list.categoryKey, "$$$/Strata/FiltersAndEffects/Category/ImageControl=Image Control");

    const hosting::Parameter& similarity = list.parameters[0];
    EXPECT_EQ(similarity.key, "$$$/Strata/VireoFilters/ColorPass/Similarity=Similarity");
    EXPECT_EQ(similarity.name, "Similarity");
    EXPECT_EQ(similarity.kind, hosting::ParameterKind::Number);
    EXPECT_EQ(similarity.maximum, 127);
    EXPECT_EQ(similarity.displayMaximum, 100);

    const hosting::Parameter& reverse = list.parameters[1];
    EXPECT_EQ(reverse.kind, hosting::ParameterKind::Boolean);
    EXPECT_EQ(reverse.offset, 2u);
    EXPECT_EQ(reverse.size, 1);

    const hosting::Parameter& color = list.parameters[2];
    EXPECT_EQ(color.kind, hosting::ParameterKind::Color);
    EXPECT_EQ(color.offset, 3u);
    EXPECT_EQ(color.size, 4);
}

TEST(PropertyListReader, TakesABendFillColorForAColor) {
    const hosting::PropertyList list = hosting::readPropertyList(handedOut(10004));
    EXPECT_EQ(list.parameters.back().kind, hosting::ParameterKind::Color);
}

TEST(PropertyListReader, FallsBackToTheTextBehindTheKey) {
    EXPECT_EQ(hosting::defaultText("$$$/A/B=Text = text"), "Text = text");
    EXPECT_EQ(hosting::defaultText("$$$/A/B="), "");
    EXPECT_EQ(hosting::defaultText("$$$/A/B"), "$$$/A/B");
    EXPECT_EQ(hosting::defaultText("Obsolete=x"), "Obsolete=x");
    EXPECT_EQ(hosting::defaultText(""), "");
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
    for (const ExpectedFilter& filter : expectedFilters) {
        const Bytes whole = handedOut(filter.id);
        ASSERT_TRUE(parses(whole)) << filter.name;
        for (std::size_t size = 0; size < whole.size(); ++size) {
            // A block of its own, so that the address sanitizer sees a byte too many read.
            const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            ASSERT_FALSE(parses(cut)) << filter.name << " cut to " << size;
        }
        for (const std::size_t tail : {1, 4, 20, 200}) {
            EXPECT_FALSE(parses(whole + Bytes(tail))) << filter.name << " with " << tail << " more";
        }
    }
}

TEST(PropertyListReader, SurvivesEveryDamagedByte) {
    std::size_t taken = 0;
    std::size_t refused = 0;
    for (const ExpectedFilter& filter : expectedFilters) {
        Bytes bytes = handedOut(filter.id);
        for (std::uint8_t& byte : bytes) {
            const std::uint8_t original = byte;
            for (const int value : {0x00, 0xFF, ~original, original ^ 0x80, original + 1}) {
                byte = static_cast<std::uint8_t>(value);
                ++(parses(bytes) ? taken : refused);
            }
            byte = original;
        }
    }
    EXPECT_GT(taken, 0u);
    EXPECT_GT(refused, 0u);
}

/// Solarize with one word or number written over, counted from the start of what hosts are handed.
template <class Value>
Bytes solarizeWith(std::size_t offset, Value value) {
    Bytes bytes = handedOut(10049);
    std::memcpy(bytes.data() + offset, &value, sizeof value);
    return bytes;
}

TEST(PropertyListReader, RefusesWhatDoesNotAddUp) {
    constexpr std::size_t version = 0;
    constexpr std::size_t count = 4;
    constexpr std::size_t vendor = 8;
    constexpr std::size_t kindLength = 20;
    constexpr std::size_t kind = 24;
    constexpr std::size_t nameLengthByte = 44;
    constexpr std::size_t announcedParameters = 288;
    constexpr std::size_t parameterId = 348;
    constexpr std::size_t parameterLength = 352;
    constexpr std::size_t parameterNumber = 452;
    constexpr std::size_t minimum = 464;
    constexpr std::size_t valueSize = 500;

    for (const std::uint32_t value : {1u, 0x80000000u, 0xFFFFFFFFu})
        EXPECT_FALSE(parses(solarizeWith(version, value)));
    for (const std::uint32_t value : {0u, 8u, 10u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        EXPECT_FALSE(parses(solarizeWith(count, value))) << "count " << value;
    }
    EXPECT_FALSE(parses(solarizeWith(vendor, 0u)));
    for (const std::size_t length : {kindLength, parameterLength}) {
        for (const std::uint32_t value : {0u, 1u, 163u, 165u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFCu,
                                          0xFFFFFFFDu, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
            EXPECT_FALSE(parses(solarizeWith(length, value))) << "length " << value << " at " << length;
        }
    }
    EXPECT_FALSE(parses(solarizeWith(kind, 0x56417564u)));
    for (const std::uint8_t value : {std::uint8_t{0}, std::uint8_t{48}, std::uint8_t{255}}) {
        EXPECT_FALSE(parses(solarizeWith(nameLengthByte, value))) << "name of " << int{value} << " bytes";
    }
    for (const std::uint32_t value : {0u, 2u, 0xFFFFFFFFu}) {
        EXPECT_FALSE(parses(solarizeWith(announcedParameters, value)));
        EXPECT_FALSE(parses(solarizeWith(parameterNumber, value)));
    }
    EXPECT_FALSE(parses(solarizeWith(parameterId, 1u)));
    for (const double value : {255.0, HUGE_VAL, -HUGE_VAL, std::nan("")}) {
        EXPECT_FALSE(parses(solarizeWith(minimum, value))) << "minimum " << value;
    }
    for (const std::uint32_t value : {0u, 3u, 8u, 0x80000000u, 0xFFFFFFFFu}) {
        EXPECT_FALSE(parses(solarizeWith(valueSize, value))) << "value of " << value << " bytes";
    }
}

TEST(PropertyListReader, RefusesValuesThatDoNotFitTheirKind) {
    constexpr std::size_t control = 456;
    constexpr std::uint32_t color = 12;
    constexpr std::uint32_t checkBox = 13;
    EXPECT_FALSE(parses(solarizeWith(control, color)));
    EXPECT_FALSE(parses(solarizeWith(control, checkBox)));
}

TEST(PropertyListReader, RefusesAParameterWhoseTextDoesNotEnd) {
    Bytes bytes = handedOut(10049);
    std::fill_n(bytes.begin() + 356, 96, std::uint8_t{'x'});
    EXPECT_FALSE(parses(bytes));
}

}  // namespace
