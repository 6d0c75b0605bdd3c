// SPDX-License-Identifier: MIT
#include "app/commands/chain_options.h"

#include "app/commands/presets.h"
#include "app/files.h"
#include "app/settings/settings_file.h"

#include <optional>

namespace vireo {
namespace {

using Kind = SettingsOption::Kind;

constexpr char levelsName[] = "Levels";

[[noreturn]] void fail(const std::string& sentence) { throw RenderError(sentence, 2); }

struct LoadedFile {
    std::string path;
    std::string text;
    std::vector<FilterSettings> filters;
};

/// Reads the options one after another; some belong to the filter that stands before them.
class ChainReader {
public:
    explicit ChainReader(const Catalogue& catalogue) : catalogue_(catalogue) {}

    ChainOptions read(const RenderOptions& options) {
        for (const SettingsOption& option : options.settings) take(option);
        if (file_) mergeFile();
        if (levelsBytes_) useLevelsBytes();
        for (const std::string& path : bytesOfTheOnlyFilter_) {
            if (chain_.filters.size() != 1)
                fail("--save-settings-bytes must stand behind the -f whose bytes it saves");
            chain_.savedBytes.push_back({0, path});
        }
        if (chain_.filters.empty())
            fail("no filter is given; -f NAME gives one, and vireo list tells their names");
        if (!options.saveSettings.empty()) chain_.settingsText = textToSave();
        return std::move(chain_);
    }

private:
    void take(const SettingsOption& option) {
        switch (option.kind) {
            case Kind::Filter: chain_.filters.push_back(parseFilterText(catalogue_, option.value)); break;
            case Kind::Preset: takePreset(option.value); break;
            case Kind::SettingsFile: {
                if (file_) fail("--settings is given twice");
                std::string text = readFile(option.value);
                auto filters = parseSettings(catalogue_, option.value, text);
                file_ = LoadedFile{option.value, std::move(text), std::move(filters)};
                break;
            }
            case Kind::SettingsBytes:
                if (chain_.filters.empty())
                    fail("--settings-bytes must stand behind the -f that it belongs to");
                setBytes(readSettingsBytes(option.value));
                break;
            case Kind::LevelsFile: takeLevels(parseLevelsFile(option.value, readFile(option.value))); break;
            case Kind::SaveSettingsBytes:
                if (chain_.filters.empty()) {
                    bytesOfTheOnlyFilter_.push_back(option.value);
                } else {
                    chain_.savedBytes.push_back({chain_.filters.size() - 1, option.value});
                }
                break;
        }
    }

    void takePreset(const std::string& name) {
        const Preset preset = findPreset(name);
        std::string text = readFile(preset.file);
        const bool isFirst = chain_.filters.empty() && !levelsBytes_;
        for (FilterSettings& filter : parseSettings(catalogue_, preset.file, text))
            chain_.filters.push_back(std::move(filter));
        hasPreset_ = true;
        presetText_ = isFirst ? std::move(text) : "";
        presetFilters_ = chain_.filters.size();
    }

    void takeLevels(std::vector<std::uint8_t> bytes) {
        const VRM::Filter& levels = catalogue_.find(levelsName);
        if (chain_.filters.empty()) {
            if (levelsBytes_) fail("--lvl is given twice");
            levelsBytes_ = std::move(bytes);
            return;
        }
        const std::string& name = chain_.filters.back().filter().properties.name;
        if (&chain_.filters.back().filter() != &levels)
            fail("--lvl belongs to Levels and not to the " + name + " before it");
        setBytes(bytes);
    }

    /// A --lvl that no -f stands before: Levels with it, or the settings of the one -f behind it.
    void useLevelsBytes() {
        const VRM::Filter& levels = catalogue_.find(levelsName);
        if (chain_.filters.empty()) chain_.filters.emplace_back(levels);
        if (chain_.filters.size() > 1 || &chain_.filters.front().filter() != &levels) {
            fail("--lvl must stand behind the -f Levels that it sets, or alone");
        }
        setBytes(*levelsBytes_);
    }

    void setBytes(const std::vector<std::uint8_t>& bytes) {
        chain_.filters.back().setBytes(bytes);
        fromBytes_.push_back(chain_.filters.size() - 1);
    }

    /// A settings file is the chain, or sets the one filter given.
    void mergeFile() {
        if (hasPreset_) fail("--settings and --preset are two chains; give one of them");
        if (chain_.filters.empty()) {
            if (levelsBytes_) fail("--settings and --lvl alone are two chains; give one of them");
            chain_.filters = file_->filters;
            return;
        }
        FilterSettings& given = chain_.filters.front();
        const std::string& name = given.filter().properties.name;
        if (chain_.filters.size() > 1) fail("--settings is a chain of its own or sets one -f, not several");
        if (file_->filters.size() != 1)
            fail(file_->path + " holds several filters and cannot set the one -f");
        if (&file_->filters.front().filter() != &given.filter()) {
            fail(file_->path + " sets " + file_->filters.front().filter().properties.name + " and not " +
                 name);
        }
        const bool isChanged = given.isSet() || !fromBytes_.empty();
        FilterSettings merged = given;
        merged.assignAll(file_->filters.front());
        merged.assignAll(given);
        given = std::move(merged);
        if (isChanged) file_->text.clear();
    }

    /// A file or preset that was loaded and not changed is saved as it was, byte by byte.
    std::string textToSave() {
        if (file_ && !file_->text.empty()) return file_->text;
        if (!presetText_.empty() && chain_.filters.size() == presetFilters_ && fromBytes_.empty())
            return presetText_;
        for (const std::size_t index : fromBytes_) chain_.filters[index].assignFromBytes();
        return settingsText(chain_.filters);
    }

    const Catalogue& catalogue_;
    ChainOptions chain_;
    std::optional<LoadedFile> file_;
    bool hasPreset_ = false;
    std::string presetText_;  ///< Of the preset that the chain begins with, while nothing stands before.
    std::size_t presetFilters_ = 0;                         ///< Filters up to the end of the last preset.
    std::optional<std::vector<std::uint8_t>> levelsBytes_;  ///< Of a --lvl before any -f.
    std::vector<std::string> bytesOfTheOnlyFilter_;         ///< Files that no -f stands before.
    std::vector<std::size_t> fromBytes_;                    ///< Filters whose settings came as bytes.
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
