// SPDX-License-Identifier: MIT
// vireo.exe, run as a person would.
#ifndef VIREO_TESTS_WINDOWS_COMMAND_FIXTURE_H
#define VIREO_TESTS_WINDOWS_COMMAND_FIXTURE_H

#include "tests/windows/dialog_driver.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/// Has a folder for its files, with a blank in its name.
class CommandFixture : public testing::Test {
protected:
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / L"vireo commands";

    CommandFixture() {
        clear();
        std::filesystem::create_directories(folder);
    }
    ~CommandFixture() override { clear(); }

    static PROCESS_INFORMATION start(const std::wstring& arguments, const wchar_t* name = L"vireo.exe") {
        const std::filesystem::path program = testedModule().parent_path() / name;
        std::wstring line = L"\"" + program.wstring() + L"\" " + arguments;
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION process{};
        EXPECT_TRUE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                                   &startup, &process));
        return process;
    }

    static DWORD finish(const PROCESS_INFORMATION& process) {
        EXPECT_EQ(WaitForSingleObject(process.hProcess, 60000), WAIT_OBJECT_0);
        DWORD status = ~0U;
        GetExitCodeProcess(process.hProcess, &status);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
        return status;
    }

    static DWORD run(const std::wstring& arguments) { return finish(start(arguments)); }

    static std::string content(const std::filesystem::path& file) {
        std::ifstream in(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    /// A process's console may hold its files a moment longer than the process.
    void clear() const {
        EXPECT_TRUE(becomesTrue([&] {
            std::error_code error;
            std::filesystem::remove_all(folder, error);
            return !error;
        }));
    }

    static std::wstring quoted(const std::filesystem::path& file) { return L" \"" + file.wstring() + L"\" "; }
};

#endif
