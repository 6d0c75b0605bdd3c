// SPDX-License-Identifier: MIT
#include "app/commands/command_line.h"

#if defined(_WIN32)
#include "app/base/files.h"
#include "host/win32.h"

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <algorithm>
#include <cstdio>

namespace {

/// A program that was started by a double click has a console of its own, which closes with it.
bool ownsConsole() {
    DWORD processes[2];
    return GetConsoleProcessList(processes, 2) == 1;
}

/// What a shell makes of a word elsewhere: the files that it stands for, or else the word.
std::vector<std::string> filesOf(const std::wstring& word) {
    std::vector<std::string> files;
    WIN32_FIND_DATAW found;
    HANDLE search = word.find_first_of(L"*?") == std::wstring::npos ? INVALID_HANDLE_VALUE
                                                                    : FindFirstFileW(word.c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return {vireo::utf8Of(word)};
    const std::wstring folder = word.substr(0, word.find_last_of(L"\\/:") + 1);
    do {
        if (found.cFileName[0] != L'.') files.push_back(vireo::utf8Of(folder + found.cFileName));
    } while (FindNextFileW(search, &found) != 0);
    FindClose(search);
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace

int main() {
    SetConsoleOutputCP(CP_UTF8);
    // The same bytes as elsewhere, in pictures and in text.
    for (std::FILE* stream : {stdin, stdout, stderr}) _setmode(_fileno(stream), _O_BINARY);
    int count = 0;
    wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) {
        for (std::string& argument : filesOf(words[i])) arguments.push_back(std::move(argument));
    }
    LocalFree(words);
    if (!arguments.empty() || !ownsConsole()) return vireo::runCommandLine(std::move(arguments));
    const int status = vireo::runCommandLine({"--help"});
    std::puts("\nType commands into a command prompt in this folder. Press Enter to close.");
    std::getchar();
    return status;
}

#else

int main(int count, char** words) { return vireo::runCommandLine({words + 1, words + count}); }

#endif
