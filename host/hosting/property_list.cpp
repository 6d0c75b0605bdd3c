// SPDX-License-Identifier: MIT
#include "host/hosting/property_list.h"

#include "host/pixkit/pixel_formats.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <string_view>

namespace hosting {
namespace {

/// Codes are stored with their first character in the most significant byte.
constexpr std::uint32_t propertyCode(const char (&characters)[5]) {
    return __builtin_bswap32(PixKit::formatCode(characters));
}

constexpr std::uint32_t vendorCode = propertyCode("QLNX");
constexpr std::uint32_t videoFilterCode = propertyCode("VFlt");
constexpr std::size_t descriptorBytes = 68;
constexpr std::size_t parameterBytes = 164;
constexpr std::size_t parameterNameBytes = 96;

// What hosts that show parameters by themselves go by; the kind says enough here.
constexpr std::size_t valueTypeBytes = 4;
constexpr std::size_t flagsBytes = 4;

constexpr std::int32_t colorWellControl = 6;
constexpr std::int32_t colorControl = 12;
constexpr std::int32_t checkBoxControl = 13;

/// Reads little-endian values front to back and never past the end.
class ByteReader {
public:
    ByteReader(std::span<const std::uint8_t> bytes, std::string where)
        : bytes_(bytes), where_(std::move(where)) {}

    template <class Value>
    Value read() {
        Value value;
        std::memcpy(&value, take(sizeof value).data(), sizeof value);
        return value;
    }

    std::span<const std::uint8_t> take(std::size_t size) {
        if (size > bytes_.size()) {
            fail("ends early: " + std::to_string(size) + " bytes wanted, " + std::to_string(bytes_.size()) +
                 " left");
        }
        const auto taken = bytes_.first(size);
        bytes_ = bytes_.subspan(size);
        return taken;
    }

    std::string zeroPadded(std::size_t size) {
        const auto field = take(size);
        const auto end = std::find(field.begin(), field.end(), std::uint8_t{0});
        if (end == field.end()) fail("holds a text without its end");
        return {field.begin(), end};
    }

    std::string lengthPrefixed() {
        const auto text = take(read<std::uint8_t>());
        return {text.begin(), text.end()};
    }

    bool atEnd() const { return bytes_.empty(); }

    [[noreturn]] void fail(const std::string& what) const { throw PropertyListError(where_ + " " + what); }

private:
    std::span<const std::uint8_t> bytes_;
    std::string where_;
};

ParameterKind kindOf(std::int32_t controlType) {
    switch (controlType) {
        case checkBoxControl: return ParameterKind::Boolean;
        case colorControl:
        case colorWellControl: return ParameterKind::Color;
        default: return ParameterKind::Number;
    }
}

Parameter readParameter(ByteReader reader, std::size_t index) {
    Parameter parameter;
    parameter.key = reader.zeroPadded(parameterNameBytes);
    parameter.name = defaultText(parameter.key);
    if (reader.read<std::int32_t>() != static_cast<std::int32_t>(index + 1)) reader.fail("is out of order");
    parameter.kind = kindOf(reader.read<std::int32_t>());
    reader.take(valueTypeBytes);
    for (double* bound :
         {&parameter.minimum, &parameter.maximum, &parameter.displayMinimum, &parameter.displayMaximum}) {
        *bound = reader.read<double>();
        if (!std::isfinite(*bound)) reader.fail("has a range that is no number");
    }
    if (parameter.minimum > parameter.maximum) reader.fail("has an inverted range");
    reader.take(flagsBytes);
    parameter.size = reader.read<std::int32_t>();
    if (parameter.size != 1 && parameter.size != 2 && parameter.size != 4) {
        reader.fail("has a value of " + std::to_string(parameter.size) + " bytes");
    }
    if ((parameter.kind == ParameterKind::Color && parameter.size != 4) ||
        (parameter.kind == ParameterKind::Boolean && parameter.size != 1)) {
        reader.fail("has a value that does not fit its control");
    }
    return parameter;
}

}  // namespace

PropertyListError::~PropertyListError() = default;

std::string defaultText(const std::string& key) {
    const std::size_t equals = key.rfind("$$$/", 0) == 0 ? key.find('=') : std::string::npos;
    return equals == std::string::npos ? key : key.substr(equals + 1);
}

std::size_t PropertyList::recordSize() const {
    return parameters.empty() ? 0
                              : parameters.back().offset + static_cast<std::size_t>(parameters.back().size);
}

PropertyList readPropertyList(std::span<const std::uint8_t> bytes) {
    ByteReader reader(bytes, "the property list");
    if (reader.read<std::int32_t>() != 0) reader.fail("has an unknown version");
    const auto count = reader.read<std::int32_t>();

    PropertyList list;
    std::int32_t announcedParameters = 0;
    for (std::int32_t i = 0; i < count; ++i) {
        const auto vendor = reader.read<std::uint32_t>();
        const auto key = reader.read<std::uint32_t>();
        const auto id = reader.read<std::uint32_t>();
        const auto length = reader.read<std::uint32_t>();
        if (vendor != vendorCode) reader.fail("holds a property of another vendor");
        ByteReader data(reader.take(length), "property " + std::to_string(i + 1));
        reader.take((4 - length % 4) % 4);

        switch (key) {
            case propertyCode("kind"):
                if (data.read<std::uint32_t>() != videoFilterCode) data.fail("is of no video filter");
                break;
            case propertyCode("name"):
                list.nameKey = data.lengthPrefixed();
                list.name = defaultText(list.nameKey);
                break;
            case propertyCode("eMNA"): list.matchName = data.lengthPrefixed(); break;
            case propertyCode("catg"):
                list.categoryKey = data.lengthPrefixed();
                list.category = defaultText(list.categoryKey);
                break;
            case propertyCode("aFLT"):
                if (length != descriptorBytes) data.fail("is no filter descriptor");
                data.take(16);
                announcedParameters = data.read<std::int32_t>();
                break;
            case propertyCode("aPAR"): {
                if (length != parameterBytes) data.fail("is no parameter descriptor");
                if (id != list.parameters.size()) data.fail("is out of order");
                Parameter parameter = readParameter(data, list.parameters.size());
                parameter.offset = list.recordSize();
                list.parameters.push_back(std::move(parameter));
                break;
            }
            default: break;  // Versions and the like, which only the application looks at.
        }
    }
    if (!reader.atEnd()) reader.fail("goes on behind its last property");
    if (list.name.empty() || list.matchName.empty()) reader.fail("names no filter");
    if (announcedParameters != static_cast<std::int32_t>(list.parameters.size())) {
        reader.fail("announces " + std::to_string(announcedParameters) + " parameters and holds " +
                    std::to_string(list.parameters.size()));
    }
    return list;
}

}  // namespace hosting
