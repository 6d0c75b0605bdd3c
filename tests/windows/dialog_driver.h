// SPDX-License-Identifier: MIT
// Opens settings dialogs through Setup and works them as a hand would, from a second thread.
#ifndef VIREO_TESTS_WINDOWS_DIALOG_DRIVER_H
#define VIREO_TESTS_WINDOWS_DIALOG_DRIVER_H

#include "host/win32.h"
#include "tests/support/filter_under_test.h"
#include "tests/support/recording_host.h"

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

/// An open dialog. What a call causes has happened when it returns.
class Dialog {
public:
    explicit Dialog(HWND window) : window_(window) {}

    HWND window() const { return window_; }
    HWND control(int id) const { return GetDlgItem(window_, id); }

    std::wstring title() const;
    std::wstring text(int id) const;
    int slider(int id) const;
    bool checked(int id) const;
    /// Of a control, in client pixels.
    RECT box(int id) const;
    COLORREF pixel(int x, int y) const;

    void press(int id) const;
    /// Moves a slider as its keys would.
    void slide(int id, int position) const;
    void choose(int id, int item) const;
    /// Types over a field's text and leaves the field.
    void type(int id, const std::wstring& text) const;
    void drag(POINT from, POINT to) const;

private:
    HWND window_;
};

/// A filter on a picture, with a host that counts its handles.
class DialogFixture : public FilterUnderTest {
public:
    DialogFixture(std::uint32_t filterId, const Picture& picture);
    /// On a gradient from black to white across with some colour.
    DialogFixture(std::uint32_t filterId, int width, int height);

    /// Runs Setup and `hand` over its dialog, presses the button and expects Setup's answer to it; 0 closes
    /// the window. Fails the test when no dialog appears, it stays open or a handle is left.
    void work(
        int button, const std::function<void(const Dialog&)>& hand = [](const Dialog&) {});

    template <class Settings>
    Settings settingsAs() const {
        Settings record{};
        const auto bytes = settings();
        if (bytes.size() < sizeof record) throw std::runtime_error("no settings are stored");
        std::memcpy(&record, bytes.data(), sizeof record);
        return record;
    }

    TestFrame source;
    TestFrame destination;

private:
    RecordingHost host_;
};

/// Any program's, once it is there; null and a failure where none appears.
HWND waitForWindow(const wchar_t* title);

/// What the screen shows of an area of a window: rows from the bottom, blue, green and red as 24-bit bitmaps
/// have them.
std::vector<char> onScreen(HWND window, int left, int top, int columns, int rows);

/// Whether a condition becomes true while one waits for it.
bool becomesTrue(const std::function<bool()>& condition);

/// Of rows from the bottom.
void saveBitmap(const std::filesystem::path& path, int width, int height, const std::vector<char>& pixels);

/// What the screen shows of a window, for people to look at.
void saveScreenshot(HWND window, const std::filesystem::path& path);

#endif
