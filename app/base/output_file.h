// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_BASE_OUTPUT_FILE_H
#define VIREO_APP_BASE_OUTPUT_FILE_H

#include <cstdint>
#include <filesystem>
#include <functional>
#include <vector>

namespace vireo {

/// A file that appears under its name when it is whole. Until then it lies in the same folder under another
/// name, and goes when this object ends. Devices and pipes are written directly.
class OutputFile {
public:
    /// Throws Error where the name is taken and may not be, or where no file can be made there.
    OutputFile(const std::filesystem::path& path, bool overwrite);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    /// Where to write. The file exists.
    const std::filesystem::path& path() const { return temporary_; }

    /// A pipe or a device.
    bool special() const { return special_; }

    /// Throws Error.
    void commit();

private:
    std::filesystem::path target_;
    std::filesystem::path temporary_;
    bool special_ = false;
};

/// Throw Error where OutputFile or OutputFileSet would, and make nothing. A folder that is missing is as good
/// as there where it is to be made first.
void checkOutputFile(const std::filesystem::path& path, bool overwrite, bool folderIsMade);
void checkOutputFolder(const std::filesystem::path& folder, bool folderIsMade);

/// Where an output is written and comes to lie.
struct OutputPlace {
    std::filesystem::path special;            ///< A pipe or a device, which is all of it.
    std::filesystem::path folder, temporary;  ///< The same where no folder can be made.
};

/// From here on the temporary files of that file's folder lie within another one there, which goes when the
/// program ends: what is confined to that one can write them and nothing beside them.
OutputPlace prepareOutput(const std::filesystem::path& path);

/// Many files of one folder, which appear together.
class OutputFileSet {
public:
    /// Files will appear in `folder`. Throws Error where none can be made there.
    explicit OutputFileSet(const std::filesystem::path& folder);
    OutputFileSet(const OutputFileSet&) = delete;
    OutputFileSet& operator=(const OutputFileSet&) = delete;
    ~OutputFileSet();

    /// Where to write the file of that name in the folder.
    std::filesystem::path add(const std::filesystem::path& name);

    /// Throws Error. Without `overwrite` no file of the folder is replaced.
    void commit(bool overwrite);

private:
    std::filesystem::path folder_;
    std::filesystem::path temporary_;
    std::vector<std::filesystem::path> names_;
};

}  // namespace vireo

#endif
