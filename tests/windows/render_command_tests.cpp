// SPDX-License-Identifier: MIT
// What vireo.exe render says and leaves where Windows is not as other systems: console events, files that are
// held open, pipes, patterns.
#include "tests/windows/command_fixture.h"

#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

/// Takes a second or more for the clip.
const std::wstring slowChain = [] {
    std::wstring words = L" --jobs 1";
    for (int i = 0; i < 6; ++i) words += L" -f \"Camera Blur:percent blur=100\"";
    return words;
}();

class RenderCommand : public CommandFixture {
protected:
    const fs::path said = folder / L"said.txt";
    const fs::path clip = folder / L"clip.y4m";
    const fs::path picture = folder / L"picture.bmp";

    RenderCommand() {
        constexpr int width = 640, height = 480, frames = 120;
        std::ofstream out(clip, std::ios::binary);
        out << "YUV4MPEG2 W640 H480 F25:1 C420jpeg\n";
        for (int i = 0; i < frames; ++i)
            out << "FRAME\n" << std::string(width * height * 3 / 2, static_cast<char>(i));
        saveBitmap(picture, 64, 48, std::vector<char>(64 * 48 * 3, '\x40'));
    }

    /// Starts vireo.exe with a console of its own, what it says going into the file.
    PROCESS_INFORMATION startSaying(const std::wstring& arguments, HANDLE output = nullptr) const {
        SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
        const HANDLE file = CreateFileW(said.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                        &inherited, CREATE_ALWAYS, 0, nullptr);
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = output != nullptr ? output : file;
        startup.hStdError = file;
        std::wstring line =
            L"\"" + (testedModule().parent_path() / L"vireo.exe").wstring() + L"\" " + arguments;
        PROCESS_INFORMATION process{};
        EXPECT_TRUE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, CREATE_NEW_CONSOLE, nullptr,
                                   nullptr, &startup, &process));
        CloseHandle(file);
        return process;
    }

    DWORD runSaying(const std::wstring& arguments) const { return finish(startSaying(arguments)); }

    /// The files in the folder that the test did not put there.
    std::vector<fs::path> made() const {
        std::vector<fs::path> paths;
        for (const auto& entry : fs::recursive_directory_iterator(folder))
            if (entry.path() != said && entry.path() != clip && entry.path() != picture)
                paths.push_back(entry.path());
        return paths;
    }
};

/// Presses Ctrl-C in a process's console, of which this process is a part that long, and does not hear it.
void sendControlC(const PROCESS_INFORMATION& process) {
    FreeConsole();
    ASSERT_TRUE(AttachConsole(process.dwProcessId));
    SetConsoleCtrlHandler(nullptr, TRUE);
    EXPECT_TRUE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0));
    WaitForSingleObject(process.hProcess, 60000);
    FreeConsole();
    SetConsoleCtrlHandler(nullptr, FALSE);
}

TEST_F(RenderCommand, ControlCLeavesNothing) {
    const PROCESS_INFORMATION process =
        startSaying(L"render" + quoted(clip) + quoted(folder / L"out.mkv") + slowChain);
    ASSERT_TRUE(becomesTrue([&] { return !made().empty(); })) << content(said);
    sendControlC(process);
    EXPECT_EQ(finish(process), 130U);
    EXPECT_EQ(content(said), "vireo: interrupted; nothing was written.\n");
    EXPECT_TRUE(made().empty());
}

TEST_F(RenderCommand, FilesThatAnotherProgramHoldsAreNamed) {
    const std::string before = content(picture);
    const HANDLE held = CreateFileW(picture.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_EQ(runSaying(L"render" + quoted(picture) + quoted(folder / L"out.bmp") + L"-f Solarize"), 1U);
    EXPECT_EQ(content(said), "vireo: cannot open " + picture.string() + ": another program has it open.\n");
    EXPECT_EQ(runSaying(L"render" + quoted(clip) + quoted(picture) + L"-f Solarize --frames 0-0 --overwrite"),
              1U);
    EXPECT_EQ(content(said), "vireo: cannot write " + picture.string() + ": another program has it open.\n");
    CloseHandle(held);
    EXPECT_TRUE(made().empty());
    EXPECT_EQ(content(picture), before);
}

TEST_F(RenderCommand, AReaderThatEndsEarlyEndsTheRender) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    HANDLE in = nullptr, out = nullptr;
    ASSERT_TRUE(CreatePipe(&in, &out, &inherited, 0));
    SetHandleInformation(in, HANDLE_FLAG_INHERIT, 0);
    const PROCESS_INFORMATION process =
        startSaying(L"render" + quoted(clip) + L"- --format y4m -f Solarize", out);
    CloseHandle(out);
    char begin[10] = {};
    DWORD count = 0;
    EXPECT_TRUE(ReadFile(in, begin, sizeof begin, &count, nullptr));
    EXPECT_EQ(std::string(begin, count), "YUV4MPEG2 ");
    CloseHandle(in);
    EXPECT_EQ(finish(process), 1U);
    EXPECT_EQ(content(said), "vireo: the reader of standard output closed the pipe.\n");
}

TEST_F(RenderCommand, PatternsStandForTheFilesThatMatch) {
    for (const wchar_t* name : {L"b.bmp", L"Ä 東.bmp", L"c.png.txt"}) fs::copy_file(picture, folder / name);
    EXPECT_EQ(runSaying(L"render" + quoted(folder / L"*.bmp") + L"--to" + quoted(folder / L"filtered") +
                        L"-f Solarize"),
              0U)
        << content(said);
    for (const wchar_t* name : {L"picture.bmp", L"b.bmp", L"Ä 東.bmp"})
        EXPECT_TRUE(fs::exists(folder / L"filtered" / name)) << content(said);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / L"filtered"), {}), 3);
    EXPECT_EQ(runSaying(L"render" + quoted(folder / L"*.jpg") + L"--to" + quoted(folder / L"others") +
                        L"-f Solarize"),
              1U);
    EXPECT_NE(content(said).find("*.jpg"), std::string::npos) << content(said);
}

}  // namespace
