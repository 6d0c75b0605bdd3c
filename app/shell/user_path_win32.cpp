// SPDX-License-Identifier: MIT
// For the installer: puts a folder at the end of the user's search path, or takes it away again and leaves
// the rest as it was, byte for byte.
//
//   user_path add|remove FOLDER   0 where the path was changed, 1 where there was nothing to change, 2 on
//   failure
#include "host/win32.h"

#include <algorithm>
#include <cwchar>
#include <string>
#include <vector>

namespace {

enum Result { Changed, Unchanged, Failed };

constexpr wchar_t separator = L';';

/// The value that holds the path. Texts with variables in them have a type of their own, which is kept.
class UserPath {
public:
    UserPath() {
        if (RegCreateKeyExW(HKEY_CURRENT_USER, L"Environment", 0, nullptr, 0, KEY_READ | KEY_WRITE, nullptr,
                            &key_, nullptr) != ERROR_SUCCESS) {
            return;
        }
        DWORD bytes = 0;
        const LSTATUS found = RegQueryValueExW(key_, name, nullptr, &type_, nullptr, &bytes);
        if (found == ERROR_FILE_NOT_FOUND) {
            isKnown_ = true;
            return;
        }
        std::vector<wchar_t> text(bytes / sizeof(wchar_t) + 1);
        if (found != ERROR_SUCCESS || (type_ != REG_SZ && type_ != REG_EXPAND_SZ) ||
            RegQueryValueExW(key_, name, nullptr, &type_, reinterpret_cast<BYTE*>(text.data()), &bytes) !=
                ERROR_SUCCESS) {
            return;
        }
        text_ = text.data();
        isKnown_ = true;
    }
    UserPath(const UserPath&) = delete;
    UserPath& operator=(const UserPath&) = delete;
    ~UserPath() {
        if (key_ != nullptr) RegCloseKey(key_);
    }

    bool isKnown() const { return isKnown_; }
    const std::wstring& text() const { return text_; }

    /// An empty path is none.
    Result write(const std::wstring& text) const {
        const LSTATUS done =
            text.empty() ? RegDeleteValueW(key_, name)
                         : RegSetValueExW(key_, name, 0, type_, reinterpret_cast<const BYTE*>(text.c_str()),
                                          static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
        return done == ERROR_SUCCESS ? Changed : Failed;
    }

private:
    static constexpr wchar_t name[] = L"Path";

    HKEY key_ = nullptr;
    DWORD type_ = REG_EXPAND_SZ;
    std::wstring text_;
    bool isKnown_ = false;
};

/// Where an entry stands in a path; npos where it does not.
std::size_t find(const std::wstring& path, const std::wstring& entry) {
    std::size_t begin = 0;
    while (begin < path.size()) {
        const bool isQuoted = path[begin] == L'"';
        const std::size_t from = isQuoted ? path.find(L'"', begin + 1) : begin;
        const std::size_t end = std::min(path.find(separator, std::min(from, path.size())), path.size());
        if (end - begin == entry.size() && _wcsnicmp(path.c_str() + begin, entry.c_str(), entry.size()) == 0)
            return begin;
        begin = end + 1;
    }
    return std::wstring::npos;
}

Result add(const UserPath& path, const std::wstring& entry) {
    std::wstring text = path.text();
    if (find(text, entry) != std::wstring::npos) return Unchanged;
    if (text.empty()) return path.write(entry);
    // Where the path ends with a separator, so it does after this: the way back is the same.
    return path.write(text.back() == separator ? text + entry + separator : text + separator + entry);
}

Result remove(const UserPath& path, const std::wstring& entry) {
    std::wstring text = path.text();
    const std::size_t begin = find(text, entry);
    if (begin == std::wstring::npos) return Unchanged;
    const bool hasBefore = begin > 0;
    text.erase(hasBefore ? begin - 1 : begin, entry.size() + 1);
    return path.write(text);
}

}  // namespace

int wmain(int count, wchar_t** words) {
    if (count != 3) return Failed;
    std::wstring entry = words[2];
    if (entry.find(separator) != std::wstring::npos) entry = L'"' + entry + L'"';
    const UserPath path;
    if (!path.isKnown()) return Failed;
    if (std::wcscmp(words[1], L"add") == 0) return add(path, entry);
    return std::wcscmp(words[1], L"remove") == 0 ? remove(path, entry) : Failed;
}
