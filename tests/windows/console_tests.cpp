// SPDX-License-Identifier: MIT
// vireo.exe where Windows is not like other systems: a console's events, and files that are open elsewhere.
#include "host/win32.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

namespace {

namespace fs = std::filesystem;

class Console : public testing::Test {
protected:
    const fs::path folder = fs::temp_directory_path() / L"vireo console ü";
    const fs::path clip = folder / L"clip.y4m";

    Console() {
        fs::remove_all(folder);
        fs::create_directories(folder);
        std::ofstream file(clip, std::ios::binary);
        file << "YUV4MPEG2 W640 H480 F25:1 C420jpeg\n";
        for (int i = 0; i < 60; ++i)
            file << "FRAME\n" << std::string(640 * 480 * 3 / 2, static_cast<char>(40 + i));
    }
    ~Console() override {
        std::error_code error;
        fs::remove_all(folder, error);
    }

    std::set<std::wstring> names() const {
        std::set<std::wstring> all;
        for (const auto& entry : fs::directory_iterator(folder))
            all.insert(entry.path().filename().wstring());
        return all;
    }

    static std::string content(const fs::path& file) {
        std::ifstream in(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    /// Starts vireo.exe in the folder; what it says goes to said.txt beside the folder.
    void start(std::wstring arguments, DWORD flags = 0) {
        wchar_t own[MAX_PATH];
        GetModuleFileNameW(nullptr, own, MAX_PATH);
        std::wstring line =
            L"\"" + (fs::path(own).parent_path() / L"vireo.exe").wstring() + L"\" " + std::move(arguments);
        SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
        HANDLE said =
            CreateFileW(said_.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS, 0, nullptr);
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdError = startup.hStdOutput = said;
        ASSERT_TRUE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, flags, nullptr,
                                   folder.c_str(), &startup, &process_));
        CloseHandle(said);
    }

    DWORD finish() {
        EXPECT_EQ(WaitForSingleObject(process_.hProcess, 60000), WAIT_OBJECT_0);
        DWORD status = ~0U;
        GetExitCodeProcess(process_.hProcess, &status);
        CloseHandle(process_.hThread);
        CloseHandle(process_.hProcess);
        return status;
    }

    std::string said() const { return content(said_); }

    /// Waits until a file of a render that is not whole lies in the folder.
    void waitUntilBegun() {
        while (names().size() < 2 && WaitForSingleObject(process_.hProcess, 10) == WAIT_TIMEOUT) continue;
        ASSERT_EQ(WaitForSingleObject(process_.hProcess, 200), WAIT_TIMEOUT) << said();
    }

    PROCESS_INFORMATION process_{};

private:
    const fs::path said_ = fs::temp_directory_path() / L"vireo console said.txt";
};

constexpr wchar_t slowRender[] =
    L"render clip.y4m out.mkv --encoder ffv1 --jobs 1 -f \"Camera Blur:percent blur=100\" "
    L"-f \"Camera Blur:percent blur=100\" -f \"Camera Blur:percent blur=100\"";

TEST_F(Console, EventsEndARenderThatLeavesNothing) {
    // A console of the test's own, whose events no other program sees.
    FreeConsole();
    ASSERT_TRUE(AllocConsole());
    start(slowRender, CREATE_NEW_PROCESS_GROUP);
    waitUntilBegun();
    ASSERT_TRUE(GenerateConsoleCtrlEvent(CTRL_BREAK_EVENT, process_.dwProcessId));
    EXPECT_EQ(finish(), 143U);
    EXPECT_EQ(said(), "vireo: terminated; nothing was written.\n");
    EXPECT_EQ(names(), std::set<std::wstring>{L"clip.y4m"});

    start(slowRender);
    waitUntilBegun();
    SetConsoleCtrlHandler(nullptr, TRUE);
    ASSERT_TRUE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0));
    EXPECT_EQ(finish(), 130U);
    EXPECT_EQ(said(), "vireo: interrupted; nothing was written.\n");
    EXPECT_EQ(names(), std::set<std::wstring>{L"clip.y4m"});
    SetConsoleCtrlHandler(nullptr, FALSE);
}

TEST_F(Console, AFileThatIsOpenElsewhereIsNamedAndKept) {
    const fs::path output = folder / L"out.mkv";
    std::ofstream(output) << "precious";
    HANDLE held =
        CreateFileW(output.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    start(L"render clip.y4m out.mkv -f Solarize --frames 0-1 --overwrite --quiet");
    EXPECT_EQ(finish(), 1U);
    EXPECT_EQ(said(), "vireo: cannot write out.mkv: another program has it open.\n");
    CloseHandle(held);
    EXPECT_EQ(content(output), "precious");
    EXPECT_EQ(names(), (std::set<std::wstring>{L"clip.y4m", L"out.mkv"}));

    held = CreateFileW(clip.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    start(L"render clip.y4m out.mkv -f Solarize --overwrite --quiet");
    EXPECT_EQ(finish(), 1U);
    EXPECT_EQ(said(), "vireo: cannot open clip.y4m: another program has it open.\n");
    CloseHandle(held);
}

TEST_F(Console, PatternsStandForTheirFiles) {
    fs::copy_file(clip, folder / L"clip äö.y4m");
    start(L"render clip*.y4m --to made --name {stem}.mkv --encoder ffv1 -f Solarize --frames 0-0 --quiet");
    EXPECT_EQ(finish(), 0U) << said();
    EXPECT_TRUE(fs::exists(folder / L"made/clip.mkv") && fs::exists(folder / L"made/clip äö.mkv"));
    start(L"render no*.y4m --to made -f Solarize --quiet");
    EXPECT_EQ(finish(), 1U);
    EXPECT_NE(said().find("no*.y4m"), std::string::npos) << said();
}

}  // namespace
