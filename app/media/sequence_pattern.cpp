// SPDX-License-Identifier: MIT
#include "app/media/sequence_pattern.h"

#include "app/base/files.h"

#include <algorithm>
#include <charconv>

namespace vireo {

std::optional<SequencePattern> SequencePattern::parse(const std::string& path) {
    const std::filesystem::path whole = pathOf(path);
    const std::string name = utf8Of(whole.filename());
    SequencePattern pattern;
    pattern.folder_ = whole.parent_path();
    bool found = false;
    for (std::size_t i = 0; i < name.size(); ++i) {
        std::string& part = found ? pattern.after_ : pattern.before_;
        if (name[i] != '%') {
            part += name[i];
            continue;
        }
        if (i + 1 < name.size() && name[i + 1] == '%') {
            part += '%';
            ++i;
            continue;
        }
        std::size_t end = i + 1;
        while (end < name.size() && name[end] >= '0' && name[end] <= '9') ++end;
        if (found || end >= name.size() || name[end] != 'd' || end - i > 3) return std::nullopt;
        const char* const digits = name.data() + i + 1;
        std::from_chars(digits, name.data() + end, pattern.digits_);
        pattern.digits_ = std::max(pattern.digits_, 1);
        found = true;
        i = end;
    }
    if (!found) return std::nullopt;
    return pattern;
}

SequencePattern SequencePattern::single(const std::string& path) {
    SequencePattern pattern;
    pattern.folder_ = pathOf(path).parent_path();
    pattern.before_ = utf8Of(pathOf(path).filename());
    pattern.digits_ = 0;
    return pattern;
}

std::filesystem::path SequencePattern::name(std::int64_t number) const {
    if (digits_ == 0) return pathOf(before_);
    std::string digits = std::to_string(number);
    if (static_cast<int>(digits.size()) < digits_)
        digits.insert(0, static_cast<std::size_t>(digits_) - digits.size(), '0');
    return pathOf(before_ + digits + after_);
}

std::vector<std::int64_t> SequencePattern::existing() const {
    std::vector<std::int64_t> numbers;
    std::error_code error;
    if (digits_ == 0) {
        if (std::filesystem::exists(folder_ / name(1), error)) numbers.push_back(1);
        return numbers;
    }
    const std::filesystem::path folder = folder_.empty() ? "." : folder_;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        const std::string found = utf8Of(entry.path().filename());
        if (found.size() <= before_.size() + after_.size() || !found.starts_with(before_) ||
            !found.ends_with(after_))
            continue;
        const char* const begin = found.data() + before_.size();
        const char* const end = found.data() + found.size() - after_.size();
        std::int64_t number = 0;
        const auto [stop, failure] = std::from_chars(begin, end, number);
        if (failure == std::errc() && stop == end && number >= 0 && name(number) == entry.path().filename())
            numbers.push_back(number);
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

}  // namespace vireo
