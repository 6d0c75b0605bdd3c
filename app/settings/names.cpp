// SPDX-License-Identifier: MIT
#include "app/settings/names.h"

#include <algorithm>

namespace vireo {
namespace {

constexpr std::string_view blanks = " \t\r\n";
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

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return lower;
}

std::string comparableName(std::string_view name) {
    std::string comparable = lowerCase(name);
    std::erase_if(comparable, [](char c) {
        return blanks.find(c) != std::string_view::npos ||
               std::string_view("()[]{}").find(c) != std::string_view::npos;
    });
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

std::string enumeration(std::span<const std::string> items, std::string_view lastWord) {
    std::string text;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i > 0) text += i + 1 == items.size() ? " " + std::string(lastWord) + " " : ", ";
        text += items[i];
    }
    return text;
}

}  // namespace vireo
