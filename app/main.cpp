// SPDX-License-Identifier: MIT
#include "app/commands/command_line.h"

#if defined(_WIN32)
#include "app/files.h"
#include "host/win32.h"

#include <shellapi.h>

int main() {
    SetConsoleOutputCP(CP_UTF8);
    int count = 0;
    wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) arguments.push_back(vireo::utf8Of(words[i]));
    LocalFree(words);
    return vireo::runCommandLine(std::move(arguments));
}

#else

int main(int count, char** words) { return vireo::runCommandLine({words + 1, words + count}); }

#endif
