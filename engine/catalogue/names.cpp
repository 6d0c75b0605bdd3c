// SPDX-License-Identifier: MIT
#include "engine/catalogue/names.h"

#include "engine/text.h"

#include <algorithm>

namespace vireo {
namespace {

constexpr std::size_t offeredNames = 3;

/// What is typed may be a whole file; its begin is enough to find names that are near.
constexpr std::size_t comparedLength = 100;

/// How many single characters have to be changed, left out, put in or swapped with the next to make `name` of
/// `typed`.
std::size_t editDistance(std::string_view typed, std::string_view name) {
    std::vector<std::vector<std::size_t>> steps(typed.size() + 1, std::vector<std::size_t>(name.size() + 1));
    for (std::size_t i = 0; i <= typed.size(); ++i) {
        for (std::size_t j = 0; j <= name.size(); ++j) {
            if (i == 0 || j == 0) {
                steps[i][j] = i + j;
                continue;
            }
            const std::size_t changed = steps[i - 1][j - 1] + (typed[i - 1] != name[j - 1]);
            steps[i][j] = std::min({steps[i - 1][j] + 1, steps[i][j - 1] + 1, changed});
            const bool swapped = i > 1 && j > 1 && typed[i - 1] == name[j - 2] && typed[i - 2] == name[j - 1];
            if (swapped) steps[i][j] = std::min(steps[i][j], steps[i - 2][j - 2] + 1);
        }
    }
    return steps.back().back();
}

/// The distance to the whole name or to its beginning, whichever is less: people abbreviate.
std::size_t distance(std::string_view typed, const std::string& name) {
    typed = typed.substr(0, comparedLength);
    const std::string whole = comparableName(name);
    return std::min(editDistance(typed, whole),
                    editDistance(typed, std::string_view(whole).substr(0, typed.size())) + 1);
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
