// SPDX-License-Identifier: MIT
#ifndef VIREO_ENGINE_SETTINGS_CHAIN_SETTINGS_H
#define VIREO_ENGINE_SETTINGS_CHAIN_SETTINGS_H

#include "engine/settings/filter_settings.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vireo {

/// The filters of a chain as people describe them. Whatever adds to it adds whole or, where it throws Error,
/// leaves it as it was.
class ChainSettings {
public:
    /// An empty chain. The catalogue outlives it.
    explicit ChainSettings(const Catalogue& catalogue) : catalogue_(&catalogue) {}

    const Catalogue& catalogue() const { return *catalogue_; }
    const std::vector<FilterSettings>& filters() const { return filters_; }

    /// A filter to be changed. Throws Error where there is none.
    FilterSettings& edit(std::size_t position);

    void add(FilterSettings filter);

    /// Adds the filters of a text such as -f takes, or of several with ";" or line ends between them.
    void addText(std::string_view text);

    /// Adds the chain of a settings file's text. `file` is its name in sentences.
    void addSettings(const std::string& file, std::string_view text);

    /// Adds the chain of the preset that goes by a name.
    void addPreset(const std::string& name);

    /// Adds Levels with what a Levels file holds. `file` is its name in sentences.
    void addLevels(const std::string& file, std::string_view content);

    /// Adds the chain of a settings file, or Levels with a Levels file.
    void addFile(const std::string& file);

    /// Throw Error where there is no such filter.
    void remove(std::size_t position);
    void move(std::size_t from, std::size_t to);

    /// The text of a settings file with this chain; what came from one file or preset and was not changed
    /// since is that file byte for byte. Throws Error where bytes of a handle cannot be written so.
    std::string settingsText() const;

private:
    void append(std::vector<FilterSettings> filters, std::string_view loaded);
    void check(std::size_t position) const;

    const Catalogue* catalogue_;
    std::vector<FilterSettings> filters_;
    std::string loaded_;  ///< The file that the whole chain came from.
};

}  // namespace vireo

#endif
