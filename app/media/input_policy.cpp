// SPDX-License-Identifier: MIT
#include "app/media/input_policy.h"

#include "app/base/files.h"
#include "app/media/sequence_pattern.h"
#include "engine/error.h"

#include <algorithm>
#include <string_view>

namespace vireo {
namespace {

namespace fs = std::filesystem;

/// The same for all names of a file.
fs::path placeOf(const fs::path& path) {
    std::error_code error;
    fs::path place = fs::weakly_canonical(fs::absolute(path, error), error);
    return error ? fs::path() : place;
}

}  // namespace

bool isAddress(const std::string& name) {
    constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789+-.";
    const std::size_t colon = name.find("://");
    return colon != std::string::npos && colon > 1 && name.find_first_not_of(letters) == colon;
}

void refuseAddress(const std::string& input) {
    std::error_code error;
    if (isAddress(input) && !fs::exists(pathOf(input), error))
        throw Error(input +
                    " is an address, and inputs are files of this machine: nothing is read from networks");
}

void refuseLinks(const SequencePattern& pattern, const std::vector<std::int64_t>& numbers,
                 const InputPolicy& policy) {
    const InputFolder folder(pattern.folder() / pattern.name(0));
    for (const std::int64_t number : numbers) {
        const fs::path picture = pattern.folder() / pattern.name(number);
        std::error_code error;
        if (!fs::is_symlink(picture, error) || folder.holds(picture)) continue;
        if (!policy.references)
            throw Error(
                utf8Of(picture) +
                " is a link that leaves its folder; --allow-references follows those to files below it");
        if (!folder.holdsBelow(picture))
            throw Error(utf8Of(picture) + " is a link to a file that does not lie below its folder");
    }
}

std::optional<std::string> excessOf(std::int64_t width, std::int64_t height, const InputPolicy& policy) {
    if (width <= 0 || height <= 0 || width <= policy.maxPixels / height) return std::nullopt;
    return "pictures of " + std::to_string(width) + " x " + std::to_string(height) +
           " pixels are more than the " + std::to_string(policy.maxPixels) + " that --max-pixels allows";
}

InputFolder::InputFolder(const fs::path& input)
    : input_(placeOf(input)), folder_(placeOf(input.has_parent_path() ? input.parent_path() : ".")) {}

bool InputFolder::isInput(const fs::path& file) const { return !input_.empty() && placeOf(file) == input_; }

bool InputFolder::holds(const fs::path& file) const {
    return !folder_.empty() && placeOf(file).parent_path() == folder_;
}

bool InputFolder::holdsBelow(const fs::path& file) const {
    const fs::path place = placeOf(file);
    if (folder_.empty() || place.empty()) return false;
    const auto [end, rest] = std::mismatch(folder_.begin(), folder_.end(), place.begin(), place.end());
    return end == folder_.end() && rest != place.end();
}

}  // namespace vireo
