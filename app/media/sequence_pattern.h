// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_SEQUENCE_PATTERN_H
#define VIREO_APP_MEDIA_SEQUENCE_PATTERN_H

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace vireo {

/// A name with a number in it: "frame%04d.png". "%%" stands for a per cent sign.
class SequencePattern {
public:
    /// Nothing where the name has no number.
    static std::optional<SequencePattern> parse(const std::string& path);

    /// The one file of that name, as number 1.
    static SequencePattern single(const std::string& path);

    const std::filesystem::path& folder() const { return folder_; }
    std::filesystem::path name(std::int64_t number) const;

    /// Numbers for which a file exists, in order.
    std::vector<std::int64_t> existing() const;

private:
    std::filesystem::path folder_;
    std::string before_;
    std::string after_;
    int digits_ = 1;  ///< 0: a name without a number.
};

}  // namespace vireo

#endif
