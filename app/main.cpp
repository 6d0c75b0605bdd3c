// SPDX-License-Identifier: MIT
#include "app/commands/command_line.h"

#if defined(_WIN32)
#include "app/base/files.h"
#include "host/win32.h"

#include <shellapi.h>

#include <cstdio>

namespace {

/// A program that was started by a double click has a console of its own, which closes with it.
bool ownsConsole() {
    DWORD processes[2];
    return GetConsoleProcessList(processes, 2) == 1;
}

}  // namespace

int main() {
    SetConsoleOutputCP(CP_UTF8);
    int count = 0;
    wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) arguments.push_back(vireo::utf8Of(words[i]));
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
