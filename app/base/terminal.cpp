// SPDX-License-Identifier: MIT
#include "app/base/terminal.h"

#include <cstdlib>

#if defined(_WIN32)
#include "host/win32.h"

#include <io.h>
#else
#include <unistd.h>
#endif

namespace vireo {
namespace {

constexpr int outputFile = 1, errorFile = 2;

bool isTerminal(int file) {
#if defined(_WIN32)
    if (_isatty(file) == 0) return false;
    HANDLE console = GetStdHandle(file == outputFile ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
    DWORD mode = 0;
    return GetConsoleMode(console, &mode) != 0 &&
           SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
#else
    const char* type = std::getenv("TERM");
    return isatty(file) != 0 && type != nullptr && std::string_view(type) != "dumb" && *type != '\0';
#endif
}

bool isColorRefused() {
    const char* refusal = std::getenv("NO_COLOR");
    return refusal != nullptr && *refusal != '\0';
}

const char* codeOf(Style style) {
    switch (style) {
        case Style::Heading: return "1";
        case Style::Name: return "36";
        case Style::Faint: return "2";
        case Style::Good: return "32";
        case Style::Warning: return "1;33";
        case Style::Error: return "1;31";
    }
    return "0";
}

}  // namespace

Terminal::Terminal(int file) : capable_(isTerminal(file)), colored_(capable_ && !isColorRefused()) {}

const Terminal& Terminal::output() {
    static const Terminal terminal(outputFile);
    return terminal;
}

const Terminal& Terminal::errors() {
    static const Terminal terminal(errorFile);
    return terminal;
}

std::string Terminal::styled(Style style, std::string_view text) const {
    if (!colored_ || text.empty()) return std::string(text);
    return std::string("\033[") + codeOf(style) + 'm' + std::string(text) + "\033[0m";
}

}  // namespace vireo
