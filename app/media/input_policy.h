// SPDX-License-Identifier: MIT
// What an input may read and how much it may ask for, whatever reads it.
#ifndef VIREO_APP_MEDIA_INPUT_POLICY_H
#define VIREO_APP_MEDIA_INPUT_POLICY_H

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace vireo {

class SequencePattern;

struct InputPolicy {
    /// Whether it may name other files, which lie below its folder.
    bool references = false;

    /// Of one of its pictures. What people photograph and film today is smaller.
    static constexpr std::int64_t usualPixels = 200'000'000;
    std::int64_t maxPixels = usualPixels;

    /// What decoders take at most.
    static constexpr std::int64_t mostPixels = 1 << 28;
};

/// Whether a name is an address such as "http://host/clip.mp4".
bool isAddress(const std::string& name);

/// Throws Error where an input is an address.
void refuseAddress(const std::string& input);

/// Throws Error where the pictures of a sequence are links that the policy does not follow.
void refuseLinks(const SequencePattern& pattern, const std::vector<std::int64_t>& numbers,
                 const InputPolicy& policy);

/// A picture's size, where the policy does not allow it, as the end of a sentence.
std::optional<std::string> excessOf(std::int64_t width, std::int64_t height, const InputPolicy& policy);

/// The folder below which an input's references lie; links that lead elsewhere lead out of it.
class InputFolder {
public:
    explicit InputFolder(const std::filesystem::path& input);

    bool isInput(const std::filesystem::path& file) const;

    /// Right in the folder, or at any depth.
    bool holds(const std::filesystem::path& file) const;
    bool holdsBelow(const std::filesystem::path& file) const;

private:
    std::filesystem::path input_, folder_;
};

}  // namespace vireo

#endif
