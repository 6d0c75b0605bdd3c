// SPDX-License-Identifier: MIT
#include "app/commands/confinement.h"

#include "app/base/files.h"
#include "app/base/output_file.h"
#include "app/media/encoder_choice.h"
#include "app/media/sequence_pattern.h"
#include "engine/locations.h"

#include <algorithm>
#include <cstdlib>
#include <set>

namespace vireo {
namespace {

namespace fs = std::filesystem;

std::string plainName(const std::string& name) { return utf8Of(pathOf(name).lexically_normal()); }

/// Encoders of two passes keep their notes where programs keep temporary files: in a folder of this one's
/// own.
class PassFolder {
public:
    PassFolder() {
#if !defined(_WIN32)
        std::error_code error;
        std::string name = utf8Of(fs::temp_directory_path(error) / "vireo-XXXXXX");
        if (error || mkdtemp(name.data()) == nullptr) return;
        path_ = name;
        setenv("TMPDIR", name.c_str(), 1);
#endif
    }
    PassFolder(const PassFolder&) = delete;
    PassFolder& operator=(const PassFolder&) = delete;
    ~PassFolder() {
        if (!path_.empty()) removeFolder(path_);
    }

    const fs::path& path() const { return path_; }

private:
    fs::path path_;
};

}  // namespace

void Confinement::allow(const fs::path& path, unsigned rights) { places_.push_back({path, rights}); }

void Confinement::allowIn(const fs::path& folder, unsigned rights) {
    allow(folder.empty() ? "." : folder, rights);
}

void Confinement::keep(const fs::path& folder) { allowIn(folder, SandboxPlace::Keep); }

void Confinement::add(const RenderOptions& options) {
    const auto save = [&](const std::string& name) {
        if (!name.empty() && !options.job.dryRun) outputs_.push_back({name, options.job.overwrite, false});
    };
    for (const fs::path& folder : presetFolders()) allowIn(folder, SandboxPlace::Read | SandboxPlace::List);
    for (const SettingsOption& option : options.settings) {
        switch (option.kind) {
            case SettingsOption::Kind::Filter:
            case SettingsOption::Kind::Preset: break;
            case SettingsOption::Kind::SaveSettingsBytes: save(option.value); break;
            default: allow(pathOf(option.value), SandboxPlace::Read);
        }
    }
    save(options.saveSettings);
}

void Confinement::add(const RenderJob& job) {
    addInput(job);
    addOutput(job);
    for (const RenderJob& other : job.alsoTo) addOutput(other);
}

void Confinement::addInput(const RenderJob& job) {
    if (job.input == "-") return;
    const fs::path input = pathOf(job.input), folder = input.parent_path();
    std::error_code error;
    inputs_.push_back(job.input);
    if (job.policy.references) allowIn(folder, SandboxPlace::Read | SandboxPlace::List);
    const auto pattern = SequencePattern::parse(job.input);
    if (!pattern || fs::exists(input, error)) {
        allow(input, fs::is_directory(input, error) ? SandboxPlace::List : SandboxPlace::Read);
        return;
    }
    allowIn(folder, SandboxPlace::List);
    for (const std::int64_t number : pattern->existing())
        allow(folder / pattern->name(number), SandboxPlace::Read);
}

void Confinement::addOutput(const RenderJob& job) {
    usesHardware_ = usesHardware_ || encodesOnHardware(job);
    hasTwoPasses_ = hasTwoPasses_ || (job.twoPass && !job.dryRun);
    // Files that an encoder is told to read.
    for (const auto& [name, value] : job.encoderOptions) {
        for (std::size_t begin = 0, end = 0; begin < value.size(); begin = end + 1) {
            end = std::min(value.find_first_of(":=,", begin), value.size());
            const fs::path file = pathOf(value.substr(begin, end - begin));
            std::error_code error;
            if (fs::is_regular_file(file, error)) allow(file, SandboxPlace::Read);
        }
    }
    if (job.output.empty() || job.output == "-") return;
    if (const auto pattern = SequencePattern::parse(job.output))
        allowIn(pattern->folder(), SandboxPlace::List);
    if (!job.dryRun) outputs_.push_back({job.output, job.overwrite, job.folderIsMade});
}

void Confinement::allowOutputs() {
    std::set<std::string> names;
    for (const Output& output : outputs_) {
        std::error_code error;
        const fs::path path = pathOf(output.name);
        if (output.folderIsMade) fs::create_directories(path.parent_path(), error);
        const OutputPlace place = prepareOutput(path);
        if (place.special.empty()) {
            allowIn(place.folder, SandboxPlace::Appear | SandboxPlace::Clear |
                                      (output.overwrite ? SandboxPlace::Replace : 0U));
            keep(place.temporary);
        } else {
            allow(place.special, SandboxPlace::Write);
        }
        names.insert(plainName(output.name));
    }
    // A job's input may be what an earlier one wrote.
    for (const std::string& input : inputs_) {
        if (names.contains(plainName(input))) allowIn(pathOf(input).parent_path(), SandboxPlace::Read);
    }
}

void Confinement::enter(const GlobalOptions& global, int child) {
    static bool isEntered = false;
    if (isEntered || global.noSandbox || usesHardware_ || sandboxStrength() == SandboxStrength::None) return;
    isEntered = true;
    allowOutputs();
    if (hasTwoPasses_) {
        static const PassFolder folder;
        if (!folder.path().empty()) {
            keep(folder.path());
            allow(folder.path().parent_path(), SandboxPlace::Clear);
        }
    }
    enterSandbox(places_, child);
}

}  // namespace vireo
