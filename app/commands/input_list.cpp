// SPDX-License-Identifier: MIT
#include "app/commands/input_list.h"

#include "app/base/files.h"
#include "app/media/sequence_pattern.h"
#include "engine/error.h"
#include "engine/text.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <optional>
#include <string_view>

namespace vireo {
namespace {

namespace fs = std::filesystem;

/// What is taken from folders. Other files may be read all the same where they are named.
constexpr std::string_view mediaEndings[] = {
    "3g2", "3gp", "apng", "asf", "avi",  "avif",  "bmp",  "dib", "dpx", "dv",   "exr", "f4v", "flv",
    "gif", "gxf", "h264", "hdr", "heic", "heif",  "hevc", "ivf", "j2k", "jfif", "jp2", "jpe", "jpeg",
    "jpg", "jxl", "m2ts", "m2v", "m4v",  "mjpeg", "mkv",  "mov", "mp4", "mpeg", "mpg", "mts", "mxf",
    "nut", "ogv", "pam",  "pbm", "pcx",  "pfm",   "pgm",  "png", "pnm", "ppm",  "psd", "qoi", "sgi",
    "tga", "tif", "tiff", "ts",  "vob",  "webm",  "webp", "wmv", "y4m"};

bool isMedia(const fs::path& path) {
    std::string ending = utf8Of(path.extension());
    if (!ending.empty()) ending.erase(0, 1);
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return std::find(std::begin(mediaEndings), std::end(mediaEndings), ending) != std::end(mediaEndings);
}

/// A name with fields in braces: "{stem}-{number}{ext}". "{{" and "}}" stand for braces.
class NameTemplate {
public:
    explicit NameTemplate(std::string text)
        : text_(std::move(text)), numbersFrames_(SequencePattern::parse(text_).has_value()) {
        if (text_.find_first_of("/\\") != std::string::npos)
            throw Error(Fault::Usage, "--name names files; their folder is told by --to");
        fill({}, "");
    }

    std::string nameOf(const fs::path& input, const std::string& number) const { return fill(input, number); }

private:
    std::string fill(const fs::path& input, const std::string& number) const {
        std::string name;
        for (std::size_t i = 0; i < text_.size(); ++i) {
            const char c = text_[i];
            if (c != '{' && c != '}') {
                name += c;
            } else if (i + 1 < text_.size() && text_[i + 1] == c) {
                name += text_[i++];
            } else {
                const std::size_t end = c == '{' ? text_.find('}', i) : std::string::npos;
                if (end == std::string::npos)
                    throw Error(Fault::Usage, "--name has a brace without its other one: " + inQuotes(text_));
                name += value(text_.substr(i + 1, end - i - 1), input, number);
                i = end;
            }
        }
        return name;
    }

    std::string value(const std::string& field, const fs::path& input, const std::string& number) const {
        std::string value;
        if (field == "stem") {
            value = utf8Of(input.stem());
        } else if (field == "ext") {
            value = utf8Of(input.extension());
        } else if (field == "name") {
            value = utf8Of(input.filename());
        } else if (field == "number") {
            value = number;
        } else {
            throw Error(Fault::Usage,
                        "--name has the fields {stem}, {ext}, {name} and {number}, not {" + field + '}');
        }
        // Beside a frame's number, a per cent sign of an input's name is one of its own.
        for (std::size_t i = 0; numbersFrames_ && (i = value.find('%', i)) != std::string::npos; i += 2)
            value.insert(i, 1, '%');
        return value;
    }

    std::string text_;
    bool numbersFrames_;  ///< Outputs are sequences.
};

/// The same for all names of a file, also of one that is still to come.
fs::path placeOf(const std::string& name) {
    std::error_code error;
    const fs::path path = fs::weakly_canonical(fs::absolute(pathOf(name), error), error);
    return error ? fs::absolute(pathOf(name)).lexically_normal() : path;
}

class InputLister {
public:
    explicit InputLister(const InputOptions& options) : options_(options) {
        if (!options.name.empty()) name_.emplace(options.name);
    }

    InputList list() {
        for (const std::string& input : options_.inputs) {
            std::error_code error;
            if (input == "-")
                throw Error(Fault::Usage, "standard input has no name to be written under in a folder");
            if (fs::is_directory(pathOf(input), error)) {
                lookInto(pathOf(input), {});
            } else {
                found_.push_back(Found{{input, {}}, {}, false});
            }
        }
        nameOutputs();
        leaveOutOutputs();
        InputList list;
        for (Found& found : found_) list.files.push_back(std::move(found.files));
        list.passedOver = std::move(passedOver_);
        if (list.files.empty())
            throw Error(Fault::Usage,
                        "there are no pictures or video in " + enumeration(options_.inputs, "or") +
                            (options_.recursive ? "" : "; --recursive looks into their folders"));
        return list;
    }

private:
    struct Found {
        RenderFiles files;
        fs::path below;  ///< Its folder, counted from the one that was named.
        bool inFolder;
    };

    void lookInto(const fs::path& folder, const fs::path& below) {
        std::vector<fs::path> names;
        try {
            for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename());
        } catch (const fs::filesystem_error& failure) {
            throw Error("cannot look into " + utf8Of(folder) + ": " + failure.code().message());
        }
        std::sort(names.begin(), names.end());
        for (const fs::path& name : names) {
            const fs::path path = folder / name;
            std::error_code error;
            if (utf8Of(name).starts_with('.')) continue;
            if (fs::is_directory(path, error)) {
                if (options_.recursive && !fs::is_symlink(path, error) &&
                    !fs::equivalent(path, pathOf(options_.folder), error))
                    lookInto(path, below / name);
            } else if (isMedia(name)) {
                found_.push_back(Found{{utf8Of(path), {}}, below, true});
            } else {
                passedOver_.push_back(utf8Of(path));
            }
        }
    }

    void nameOutputs() {
        const std::size_t digits = std::to_string(found_.size()).size();
        for (std::size_t i = 0; i < found_.size(); ++i) {
            const fs::path input = pathOf(found_[i].files.input);
            std::string number = std::to_string(i + 1);
            number.insert(0, digits - number.size(), '0');
            const fs::path name = name_ ? pathOf(name_->nameOf(input, number)) : input.filename();
            if (name.empty() || name == "." || name == "..")
                throw Error(Fault::Usage,
                            found_[i].files.input + " would have no name in " + options_.folder);
            found_[i].files.output = utf8Of(pathOf(options_.folder) / found_[i].below / name);
        }
    }

    /// What an earlier run of the same command wrote beside its inputs is none of them. Where somebody names
    /// both, the one could be read while the other is written.
    void leaveOutOutputs() {
        std::map<fs::path, std::size_t> outputs;
        for (std::size_t i = 0; i < found_.size(); ++i) {
            const auto [other, isNew] = outputs.emplace(placeOf(found_[i].files.output), i);
            if (!isNew)
                throw Error(Fault::Usage, "two inputs would be written to " + found_[i].files.output + ": " +
                                              found_[other->second].files.input + " and " +
                                              found_[i].files.input);
        }
        std::vector<Found> kept;
        for (std::size_t i = 0; i < found_.size(); ++i) {
            const auto other = outputs.find(placeOf(found_[i].files.input));
            const bool isOutput = other != outputs.end() && other->second != i;
            if (isOutput && !found_[i].inFolder)
                throw Error(Fault::Usage, found_[i].files.input + " is an input, and " +
                                              found_[other->second].files.input + " would be written to it");
            if (!isOutput) kept.push_back(found_[i]);
        }
        found_ = std::move(kept);
    }

    const InputOptions& options_;
    std::optional<NameTemplate> name_;
    std::vector<Found> found_;
    std::vector<std::string> passedOver_;
};

}  // namespace

InputList listInputs(const InputOptions& options) { return InputLister(options).list(); }

}  // namespace vireo
