// SPDX-License-Identifier: MIT
#include "engine/settings/chain_settings.h"

#include "engine/error.h"
#include "engine/files.h"
#include "engine/settings/presets.h"
#include "engine/settings/settings_file.h"

#include <algorithm>
#include <iterator>

namespace vireo {

void ChainSettings::check(std::size_t position) const {
    if (position >= filters_.size()) {
        throw Error(Fault::Usage, "the chain has " + std::to_string(filters_.size()) +
                                      " filters and none at position " + std::to_string(position));
    }
}

FilterSettings& ChainSettings::edit(std::size_t position) {
    check(position);
    loaded_.clear();
    return filters_[position];
}

void ChainSettings::append(std::vector<FilterSettings> filters, std::string_view loaded) {
    if (filters.empty()) return;
    std::string text(filters_.empty() ? loaded : std::string_view());
    filters_.reserve(filters_.size() + filters.size());
    std::move(filters.begin(), filters.end(), std::back_inserter(filters_));
    loaded_ = std::move(text);
}

void ChainSettings::add(FilterSettings filter) {
    filters_.push_back(std::move(filter));
    loaded_.clear();
}

void ChainSettings::addText(std::string_view text) { append(parseChainText(*catalogue_, text), {}); }

void ChainSettings::addSettings(const std::string& file, std::string_view text) {
    append(parseSettings(*catalogue_, file, text), text);
}

void ChainSettings::addPreset(const std::string& name) {
    const Preset preset = findPreset(name);
    addSettings(preset.file, readFile(preset.file));
}

void ChainSettings::addLevels(const std::string& file, std::string_view content) {
    FilterSettings levels(catalogue_->find(levelsFilter), catalogue_->language());
    levels.setBytes(parseLevelsFile(file, content));
    add(std::move(levels));
}

void ChainSettings::addFile(const std::string& file) {
    const std::string content = readFile(file);
    if (isLevelsFile(content)) {
        addLevels(file, content);
    } else {
        addSettings(file, content);
    }
}

void ChainSettings::remove(std::size_t position) {
    check(position);
    filters_.erase(filters_.begin() + static_cast<std::ptrdiff_t>(position));
    loaded_.clear();
}

void ChainSettings::move(std::size_t from, std::size_t to) {
    check(from);
    check(to);
    const auto at = [&](std::size_t position) {
        return filters_.begin() + static_cast<std::ptrdiff_t>(position);
    };
    if (from < to) {
        std::rotate(at(from), at(from + 1), at(to + 1));
    } else {
        std::rotate(at(to), at(from), at(from + 1));
    }
    loaded_.clear();
}

std::string ChainSettings::settingsText() const {
    return loaded_.empty() ? vireo::settingsText(filters_) : loaded_;
}

}  // namespace vireo
