// SPDX-License-Identifier: MIT
#include "app/commands/chain_options.h"

#include "app/base/files.h"
#include "engine/error.h"
#include "engine/settings/settings_file.h"

#include <algorithm>
#include <optional>

namespace vireo {
namespace {

using Kind = SettingsOption::Kind;

/// Reads the options one after another; some belong to the filter that stands before them.
class ChainReader {
public:
    explicit ChainReader(const Catalogue& catalogue) : catalogue_(catalogue), chain_(catalogue) {}

    ChainOptions read(const RenderOptions& options) {
        for (const SettingsOption& option : options.settings) take(option);
        if (file_) mergeFile();
        if (levelsBytes_) useLevelsBytes();
        for (const std::string& path : bytesOfTheOnlyFilter_) {
            if (chain_.filters().size() != 1)
                throw Error(Fault::Usage,
                            "--save-settings-bytes must stand behind the -f whose bytes it saves");
            savedBytes_.push_back({0, path});
        }
        if (chain_.filters().empty())
            throw Error(Fault::Usage,
                        "no filter is given; -f NAME gives one, and vireo list tells their names");
        return {chain_.filters(), options.saveSettings.empty() ? "" : chain_.settingsText(),
                std::move(savedBytes_)};
    }

private:
    void take(const SettingsOption& option) {
        switch (option.kind) {
            case Kind::Filter: chain_.add(parseFilterText(catalogue_, option.value)); break;
            case Kind::Preset:
                chain_.addPreset(option.value);
                hasPreset_ = true;
                break;
            case Kind::SettingsFile:
                if (file_) throw Error(Fault::Usage, "--settings is given twice");
                file_.emplace(catalogue_).addSettings(option.value, readFile(option.value));
                fileName_ = option.value;
                break;
            case Kind::SettingsBytes:
                if (chain_.filters().empty())
                    throw Error(Fault::Usage, "--settings-bytes must stand behind the -f that it belongs to");
                setBytes(readSettingsBytes(option.value));
                break;
            case Kind::LevelsFile: takeLevels(parseLevelsFile(option.value, readFile(option.value))); break;
            case Kind::SaveSettingsBytes:
                if (chain_.filters().empty()) {
                    bytesOfTheOnlyFilter_.push_back(option.value);
                } else {
                    savedBytes_.push_back({chain_.filters().size() - 1, option.value});
                }
                break;
        }
    }

    void takeLevels(std::vector<std::uint8_t> bytes) {
        const hosting::Filter& levels = catalogue_.find(levelsFilter);
        if (chain_.filters().empty()) {
            if (levelsBytes_) throw Error(Fault::Usage, "--lvl is given twice");
            levelsBytes_ = std::move(bytes);
            return;
        }
        const hosting::Filter& last = chain_.filters().back().filter();
        if (&last != &levels)
            throw Error(Fault::Usage,
                        "--lvl belongs to Levels and not to the " + last.properties.name + " before it");
        setBytes(bytes);
    }

    /// A --lvl that no -f stands before: Levels with it, or the settings of the one -f behind it.
    void useLevelsBytes() {
        const hosting::Filter& levels = catalogue_.find(levelsFilter);
        if (chain_.filters().empty()) chain_.add(FilterSettings(levels));
        if (chain_.filters().size() > 1 || &chain_.filters().front().filter() != &levels) {
            throw Error(Fault::Usage, "--lvl must stand behind the -f Levels that it sets, or alone");
        }
        setBytes(*levelsBytes_);
    }

    void setBytes(const std::vector<std::uint8_t>& bytes) {
        chain_.edit(chain_.filters().size() - 1).setBytes(bytes);
    }

    /// A settings file is the chain, or sets the one filter given.
    void mergeFile() {
        if (hasPreset_) throw Error(Fault::Usage, "--settings and --preset are two chains; give one of them");
        if (chain_.filters().empty()) {
            if (levelsBytes_)
                throw Error(Fault::Usage, "--settings and --lvl alone are two chains; give one of them");
            chain_ = std::move(*file_);
            return;
        }
        const FilterSettings& given = chain_.filters().front();
        if (chain_.filters().size() > 1)
            throw Error(Fault::Usage, "--settings is a chain of its own or sets one -f, not several");
        if (file_->filters().size() != 1)
            throw Error(Fault::Usage, fileName_ + " holds several filters and cannot set the one -f");
        const FilterSettings& loaded = file_->filters().front();
        if (&loaded.filter() != &given.filter()) {
            throw Error(Fault::Usage, fileName_ + " sets " + loaded.filter().properties.name + " and not " +
                                          given.filter().properties.name);
        }
        if (!given.isSet() && !given.hasBytes() && !levelsBytes_) {
            chain_ = std::move(*file_);
            return;
        }
        FilterSettings merged = given;
        merged.assignAll(loaded);
        merged.assignAll(given);
        chain_.edit(0) = std::move(merged);
    }

    const Catalogue& catalogue_;
    ChainSettings chain_;
    std::vector<SavedBytes> savedBytes_;
    std::optional<ChainSettings> file_;
    std::string fileName_;
    bool hasPreset_ = false;
    std::optional<std::vector<std::uint8_t>> levelsBytes_;  ///< Of a --lvl before any -f.
    std::vector<std::string> bytesOfTheOnlyFilter_;         ///< Files that no -f stands before.
};

}  // namespace

ChainOptions readChain(const Catalogue& catalogue, const RenderOptions& options) {
    return ChainReader(catalogue).read(options);
}

void refuseTakenNames(const ChainOptions& chain, const RenderOptions& options) {
    if (options.job.overwrite) return;
    if (!options.saveSettings.empty()) refuseExisting(options.saveSettings);
    for (const SavedBytes& saved : chain.savedBytes) refuseExisting(saved.path);
}

void saveSettings(const ChainOptions& chain, const RenderOptions& options) {
    if (!options.saveSettings.empty())
        writeFile(options.saveSettings, chain.settingsText, options.job.overwrite);
    for (const SavedBytes& saved : chain.savedBytes) {
        const auto record = chain.filters[saved.filter].record({});
        writeFile(saved.path, {reinterpret_cast<const char*>(record.data()), record.size()},
                  options.job.overwrite);
    }
}

}  // namespace vireo
