// SPDX-License-Identifier: MIT
#ifndef VIREO_ENGINE_CATALOGUE_HOST_IDENTITY_H
#define VIREO_ENGINE_CATALOGUE_HOST_IDENTITY_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace vireo {

/// What a module sees of its host, and the language of names.
struct HostIdentity {
    std::optional<std::int32_t> applicationType;  ///< Nothing: as it is.
    std::string_view language;                    ///< Such as "de"; empty: as it is.
};

/// For the whole process, before a module is loaded. Throws Error of wrong usage.
void present(const HostIdentity& identity);

}  // namespace vireo

#endif
