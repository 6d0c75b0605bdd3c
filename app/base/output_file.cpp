// SPDX-License-Identifier: MIT
#include "app/base/output_file.h"

#include "app/base/files.h"
#include "app/base/interruption.h"
#include "engine/error.h"

#include <fcntl.h>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <map>
#include <system_error>

#ifdef _WIN32
#include <io.h>
#include <process.h>
#include <sys/stat.h>
#define getpid _getpid
#else
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace vireo {
namespace {

namespace fs = std::filesystem;

Error cannotWrite(const fs::path& path, const std::error_code& error) {
    return Error("cannot write " + utf8Of(path) + ": " +
                 (isHeld(path) ? "another program has it open" : reasonOf(error)));
}

/// With the rights of the file whose place it will take, if there is one.
bool createFile(const fs::path& path, const fs::file_status& former, std::error_code& error) {
#ifdef _WIN32
    const int file = _wopen(path.c_str(), _O_WRONLY | _O_CREAT | _O_EXCL | _O_BINARY, _S_IREAD | _S_IWRITE);
    if (file >= 0) _close(file);
    std::error_code unimportant;
    if (file >= 0 && fs::exists(former)) fs::permissions(path, former.permissions(), unimportant);
#else
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file >= 0 && fs::exists(former)) fchmod(file, static_cast<mode_t>(former.permissions()));
    if (file >= 0) close(file);
#endif
    error = file < 0 ? std::error_code(errno, std::generic_category()) : std::error_code();
    return file >= 0;
}

bool createFolder(const fs::path& path, std::error_code& error) { return fs::create_directory(path, error); }

/// Folders within which the temporary files of another one lie.
class PreparedFolders {
public:
    PreparedFolders() = default;
    PreparedFolders(const PreparedFolders&) = delete;
    PreparedFolders& operator=(const PreparedFolders&) = delete;
    ~PreparedFolders() {
        for (const auto& [folder, within] : folders_) removeFolder(within);
    }

    const fs::path& within(const fs::path& folder) const {
        const auto found = folders_.find(folder);
        return found == folders_.end() ? folder : found->second;
    }
    void add(const fs::path& folder, const fs::path& within) { folders_.emplace(folder, within); }

private:
    std::map<fs::path, fs::path> folders_;
};

PreparedFolders& preparedFolders() {
    static PreparedFolders folders;
    return folders;
}

/// Makes a file or a folder beside `path` by `create(name, error)`, which tells whether it made it. Its name
/// may be taken: by the leftover of a program that was killed, or from another machine.
template <class Create>
fs::path makeTemporary(const fs::path& path, const fs::path& shown, Create create) {
    static std::atomic<int> counter = 0;
    while (true) {
        fs::path name = preparedFolders().within(path.parent_path()) /
                        (".vireo-" + std::to_string(getpid()) + '-' + std::to_string(++counter) + ".part");
        std::error_code error;
        if (create(name, error)) return name;
        if (error && error != std::errc::file_exists) throw cannotWrite(shown, error);
    }
}

struct Target {
    fs::path path;
    fs::file_status status;

    bool exists() const { return fs::exists(status); }
    bool isSpecial() const { return exists() && !fs::is_regular_file(status); }
};

Target lookedUp(const fs::path& path) {
    std::error_code error;
    Target target{path, {}};
    // What a link points to is replaced, not the link.
    if (fs::is_symlink(path, error)) {
        const fs::path resolved = fs::weakly_canonical(path, error);
        if (!error) target.path = resolved;
    }
    target.status = fs::status(target.path, error);
    return target;
}

/// What an output's name stands for. Throws Error where it may not be written.
Target targetOf(const fs::path& path, bool overwrite) {
    Target target = lookedUp(path);
    if (fs::is_directory(target.status)) throw Error(utf8Of(path) + " is a folder");
    if (target.isSpecial()) return target;
    if (target.exists() && !overwrite) throw Error(utf8Of(path) + " exists; --overwrite replaces it");
#ifndef _WIN32
    if (target.exists() && access(target.path.c_str(), W_OK) != 0)
        throw cannotWrite(path, {errno, std::generic_category()});
#endif
    return target;
}

/// Throws Error where no file can be made in the folder.
void checkFolder(const fs::path& folder, const fs::path& shown, bool isMade) {
    std::error_code error;
    fs::path place = folder.empty() ? "." : folder;
    while (isMade && !fs::exists(place, error) && place != place.parent_path())
        place = place.has_parent_path() ? place.parent_path() : ".";
    const fs::file_status status = fs::status(place, error);
    if (!fs::exists(status)) throw cannotWrite(shown, make_error_code(std::errc::no_such_file_or_directory));
    if (!fs::is_directory(status)) throw cannotWrite(shown, make_error_code(std::errc::not_a_directory));
#ifndef _WIN32
    if (access(place.c_str(), W_OK | X_OK) != 0) throw cannotWrite(shown, {errno, std::generic_category()});
#endif
}

}  // namespace

OutputFile::OutputFile(const fs::path& path, bool overwrite) {
    const Target target = targetOf(path, overwrite);
    target_ = target.path;
    special_ = target.isSpecial();
    const auto create = [&](const fs::path& name, std::error_code& error) {
        return createFile(name, target.status, error);
    };
    temporary_ = special_ ? target_ : makeTemporary(target_, path, create);
}

OutputFile::~OutputFile() {
    std::error_code error;
    if (!special_ && !temporary_.empty()) fs::remove(temporary_, error);
}

void OutputFile::commit() {
    throwIfInterrupted();
    if (special_) return;
    std::error_code error;
    fs::rename(temporary_, target_, error);
    if (error) throw cannotWrite(target_, error);
    temporary_.clear();
}

OutputPlace prepareOutput(const fs::path& path) {
    const Target target = lookedUp(path);
    if (target.isSpecial()) return {target.path, {}, {}};
    OutputPlace place{{}, target.path.parent_path(), {}};
    place.temporary = preparedFolders().within(place.folder);
    if (place.temporary != place.folder) return place;
    try {
        place.temporary = makeTemporary(target.path, path, createFolder);
        preparedFolders().add(place.folder, place.temporary);
    } catch (const Error&) {
        // Writing the output says it.
    }
    return place;
}

void checkOutputFile(const fs::path& path, bool overwrite, bool folderIsMade) {
    const Target target = targetOf(path, overwrite);
    if (!target.isSpecial()) checkFolder(target.path.parent_path(), path, folderIsMade);
}

void checkOutputFolder(const fs::path& folder, bool folderIsMade) {
    checkFolder(folder, folder.empty() ? "." : folder, folderIsMade);
}

OutputFileSet::OutputFileSet(const fs::path& folder)
    : folder_(folder), temporary_(makeTemporary(folder / "x", folder.empty() ? "." : folder, createFolder)) {}

OutputFileSet::~OutputFileSet() { removeFolder(temporary_); }

fs::path OutputFileSet::add(const fs::path& name) {
    names_.push_back(name);
    return temporary_ / name;
}

void OutputFileSet::commit(bool overwrite) {
    throwIfInterrupted();
    std::error_code error;
    if (!overwrite) {
        for (const fs::path& name : names_) {
            if (fs::exists(folder_ / name, error))
                throw Error(utf8Of(folder_ / name) + " exists; --overwrite replaces it");
        }
    }
    for (const fs::path& name : names_) {
        fs::rename(temporary_ / name, folder_ / name, error);
        if (error) throw cannotWrite(folder_ / name, error);
    }
}

}  // namespace vireo
