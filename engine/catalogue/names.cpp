// SPDX-License-Identifier: MIT
#include "engine/catalogue/names.h"

#include "engine/text.h"

#include <algorithm>

namespace vireo {
namespace {

constexpr std::size_t offeredNames = 3;

/// What is typed may be a whole file; its begin is enough to find names that are near.
constexpr std::size_t comparedLength = 40;

/// How many single characters have to be changed, left out, put in or swapped with the next to make of
/// `typed` the whole name or, one dearer, its beginning: people abbreviate.
std::size_t distance(std::string_view typed, const std::string& name) {
    typed = typed.substr(0, comparedLength);
    const std::string whole = comparableName(name);
    // A row for what is typed so far, and the two before it.
    const std::size_t width = whole.size() + 1;
    std::vector<std::size_t> rows(3 * width);
    std::size_t *row = rows.data(), *above = row + width, *twoAbove = above + width;
    for (std::size_t i = 0; i <= typed.size(); ++i) {
        std::swap(twoAbove, above);
        std::swap(above, row);
        row[0] = i;
        for (std::size_t j = 1; j < width; ++j) {
            if (i == 0) {
                row[j] = j;
                continue;
            }
            row[j] =
                std::min(std::min(above[j], row[j - 1]) + 1, above[j - 1] + (typed[i - 1] != whole[j - 1]));
            const bool swapped =
                i > 1 && j > 1 && typed[i - 1] == whole[j - 2] && typed[i - 2] == whole[j - 1];
            if (swapped) row[j] = std::min(row[j], twoAbove[j - 2] + 1);
        }
    }
    return std::min(row[whole.size()], row[std::min(typed.size(), whole.size())] + 1);
}

}  // namespace

std::string comparableName(std::string_view name) {
    std::string comparable = lowerCase(name);
    std::erase_if(comparable,
                  [](char c) { return std::string_view(" \t\r\n()[]{}").find(c) != std::string_view::npos; });
    return comparable;
}

std::vector<std::size_t> matchName(std::string_view typed, std::span<const Names> things) {
    const std::string wanted = comparableName(typed);
    std::vector<std::size_t> exact, beginning;
    if (wanted.empty()) return exact;
    for (std::size_t i = 0; i < things.size(); ++i) {
        bool isExact = false, begins = false;
        for (const std::string& name : things[i]) {
            const std::string comparable = comparableName(name);
            isExact |= comparable == wanted;
            begins |= comparable.starts_with(wanted);
        }
        if (isExact) exact.push_back(i);
        if (begins) beginning.push_back(i);
    }
    return exact.empty() ? beginning : exact;
}

std::vector<std::string> firstNames(std::span<const std::size_t> indices, std::span<const Names> things) {
    std::vector<std::string> names;
    names.reserve(indices.size());
    for (const std::size_t index : indices) names.push_back(things[index].front());
    return names;
}

std::vector<std::string> nearestNames(std::string_view typed, std::span<const Names> things) {
    const std::string wanted = comparableName(typed);
    std::vector<std::size_t> distances(things.size(), std::string::npos), order(things.size());
    for (std::size_t i = 0; i < things.size(); ++i) {
        for (const std::string& name : things[i])
            distances[i] = std::min(distances[i], distance(wanted, name));
        order[i] = i;
    }
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return distances[a] < distances[b]; });
    order.resize(std::min(order.size(), offeredNames));
    return firstNames(order, things);
}

}  // namespace vireo
