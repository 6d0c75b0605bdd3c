// SPDX-License-Identifier: MIT
// VireoPreview.exe: what the Explorer opens pictures and videos with. Runs vireo preview without a console;
// what it says when it fails comes in a box. Without a file it asks for one.
#include "host/win32.h"

#include <commdlg.h>
#include <shellapi.h>

#include <string>
#include <vector>

namespace {

constexpr wchar_t title[] = L"Vireo preview";
constexpr std::size_t longestPath = 32768;

std::wstring programFile() {
    std::wstring path(longestPath, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path.substr(0, path.rfind(L'\\') + 1) + L"vireo.exe";
}

/// As programs take one word of their command line apart again.
std::wstring quoted(const std::wstring& word) {
    std::wstring text = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t c : word) {
        if (c == L'\\') {
            ++backslashes;
        } else {
            if (c == L'"') text.append(backslashes + 1, L'\\');
            backslashes = 0;
        }
        text += c;
    }
    text.append(backslashes, L'\\');
    return text + L'"';
}

/// Empty where none is chosen.
std::wstring chosenFile() {
    std::wstring path(longestPath, L'\0');
    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof dialog;
    dialog.lpstrFile = path.data();
    dialog.nMaxFile = static_cast<DWORD>(path.size());
    dialog.lpstrTitle = title;
    dialog.Flags = OFN_EXPLORER | OFN_FILEMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
    if (GetOpenFileNameW(&dialog) == 0) return {};
    return path.c_str();
}

void complain(const std::wstring& sentence) {
    MessageBoxW(nullptr, sentence.c_str(), title, MB_OK | MB_ICONERROR);
}

std::wstring fromUtf8(const std::string& text) {
    const auto size = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0');
    wide.resize(static_cast<std::size_t>(
        MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), static_cast<int>(wide.size()))));
    return wide;
}

/// Runs a command line and gives its status, and what it says on standard error.
int run(std::wstring line, std::string& said) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    HANDLE ours = nullptr, theirs = nullptr;
    if (CreatePipe(&ours, &theirs, &inherited, 0) == 0) return -1;
    SetHandleInformation(ours, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdError = theirs;
    startup.hStdOutput = theirs;
    PROCESS_INFORMATION process{};
    const bool runs = CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr,
                                     nullptr, &startup, &process) != 0;
    CloseHandle(theirs);
    DWORD status = 1;
    if (runs) {
        char buffer[4096];
        DWORD size = 0;
        while (ReadFile(ours, buffer, sizeof buffer, &size, nullptr) != 0 && size > 0)
            said.append(buffer, size);
        WaitForSingleObject(process.hProcess, INFINITE);
        GetExitCodeProcess(process.hProcess, &status);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
    CloseHandle(ours);
    return runs ? static_cast<int>(status) : -1;
}

}  // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, wchar_t*, int) {
    int count = 0;
    wchar_t** const words = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::wstring> arguments(words + 1, words + count);
    LocalFree(words);
    if (arguments.empty()) arguments.push_back(chosenFile());
    if (arguments.front().empty()) return 0;

    std::wstring line = quoted(programFile()) + L" preview --quiet";
    for (const std::wstring& word : arguments) line += L' ' + quoted(word);
    std::string said;
    const int status = run(line, said);
    if (status < 0) {
        complain(L"There is no vireo.exe beside VireoPreview.exe.");
    } else if (status != 0) {
        complain(fromUtf8(said));
    }
    return status == 0 ? 0 : 1;
}
