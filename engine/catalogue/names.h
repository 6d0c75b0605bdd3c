// SPDX-License-Identifier: MIT
// How filters and parameters are found by what people type.
#ifndef VIREO_ENGINE_CATALOGUE_NAMES_H
#define VIREO_ENGINE_CATALOGUE_NAMES_H

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vireo {

/// The form in which names are compared: without case, blanks and brackets.
std::string comparableName(std::string_view name);

/// All the names that one thing goes by.
using Names = std::vector<std::string>;

/// The things that go by exactly the typed name or, where none does, those with a name that begins so.
/// Nothing when nothing was typed.
std::vector<std::size_t> matchName(std::string_view typed, std::span<const Names> things);

/// The first names of some of the things.
std::vector<std::string> firstNames(std::span<const std::size_t> indices, std::span<const Names> things);

/// Up to three of the things' first names, those most like the typed one first.
std::vector<std::string> nearestNames(std::string_view typed, std::span<const Names> things);

}  // namespace vireo

#endif
