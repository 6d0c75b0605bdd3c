// SPDX-License-Identifier: MIT
// The reader of filters' property lists. It trusts nothing: any bytes either parse whole or raise an error.
#ifndef VIREO_HOST_HOSTING_PROPERTY_LIST_H
#define VIREO_HOST_HOSTING_PROPERTY_LIST_H

#include "host/host_export.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace hosting {

/// A property list that is damaged; what() says where and how in one sentence.
class VIREO_HOST_API PropertyListError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    ~PropertyListError() override;
};

enum class ParameterKind { Number, Boolean, Color };

/// One parameter of a filter. Its value stands in the settings record as `size` little-endian bytes at
/// `offset`.
struct Parameter {
    std::string key;   ///< "$$$/…=Text", what the localiser takes.
    std::string name;  ///< The text after "=".
    ParameterKind kind = ParameterKind::Number;
    double minimum = 0;
    double maximum = 0;
    double displayMinimum = 0;
    double displayMaximum = 0;
    std::int32_t size = 0;
    std::size_t offset = 0;
};

struct PropertyList {
    std::string nameKey;
    std::string name;
    std::string matchName;
    std::string categoryKey;
    std::string category;
    std::vector<Parameter> parameters;

    /// Bytes of all parameters' values; a settings handle is at least as long.
    VIREO_HOST_API std::size_t recordSize() const;
};

/// The text after "=" of a "$$$/" key; a plain text as it is.
VIREO_HOST_API std::string defaultText(const std::string& key);

/// Parses what selector 5 hands out (the resource without its first two bytes). Throws PropertyListError.
VIREO_HOST_API PropertyList readPropertyList(std::span<const std::uint8_t> bytes);

}  // namespace hosting

#endif
