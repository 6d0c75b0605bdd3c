// SPDX-License-Identifier: MIT
#include "tests/windows/dialog_driver.h"
#include "tests/windows/dialog_languages.h"

#include "framework/dialog_window.h"
#include "host/vireo_host.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace {

std::wstring className(HWND window) {
    wchar_t name[64];
    GetClassNameW(window, name, 64);
    return name;
}

/// A control's text, or what a combo box offers.
std::vector<std::wstring> textsOf(HWND control) {
    wchar_t text[256];
    if (className(control) != L"ComboBox") {
        SendMessageW(control, WM_GETTEXT, 256, reinterpret_cast<LPARAM>(text));
        return {text};
    }
    std::vector<std::wstring> choices(static_cast<std::size_t>(SendMessageW(control, CB_GETCOUNT, 0, 0)));
    for (std::size_t i = 0; i < choices.size(); ++i) {
        SendMessageW(control, CB_GETLBTEXT, i, reinterpret_cast<LPARAM>(text));
        choices[i] = text;
    }
    return choices;
}

/// Of a text without its accelerator mark, in the control's font.
SIZE textSize(HWND control, std::wstring text) {
    std::erase(text, L'&');
    const WindowContext context(control);
    SelectObject(context.get(), reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0)));
    SIZE size{};
    GetTextExtentPoint32W(context.get(), text.data(), static_cast<int>(text.size()), &size);
    return size;
}

/// What a control has for its text across.
int textRoom(HWND control) {
    RECT client;
    GetClientRect(control, &client);
    const int width = static_cast<int>(client.right);
    const std::wstring kind = className(control);
    if (kind == L"Button") {
        switch (GetWindowLongPtrW(control, GWL_STYLE) & BS_TYPEMASK) {
            case BS_AUTOCHECKBOX: return width - GetSystemMetrics(SM_CXMENUCHECK) - 4;
            case BS_GROUPBOX: return width - 16;
            default: return width - 6;
        }
    }
    if (kind == L"ComboBox") {
        COMBOBOXINFO info{};
        info.cbSize = sizeof info;
        GetComboBoxInfo(control, &info);
        return static_cast<int>(info.rcItem.right - info.rcItem.left) - 2;
    }
    return width;
}

void expectTextsFit(HWND dialog) {
    for (HWND control = GetWindow(dialog, GW_CHILD); control != nullptr;
         control = GetWindow(control, GW_HWNDNEXT)) {
        for (const std::wstring& text : textsOf(control)) {
            EXPECT_LE(textSize(control, text).cx, textRoom(control))
                << "control " << GetDlgCtrlID(control) << ' ' << testing::PrintToString(text);
        }
    }
}

class DialogLanguages : public testing::TestWithParam<NamedFilter> {
protected:
    ~DialogLanguages() override { vireoHostSetLanguage(dialogLanguages[0].id); }
};

TEST_P(DialogLanguages, EveryLanguageOpensTheDialogAndItsTextsFit) {
    std::map<std::wstring, const char*> titles;
    for (const NamedLanguage& language : dialogLanguages) {
        SCOPED_TRACE(language.name);
        vireoHostSetLanguage(language.id);
        DialogFixture fixture(GetParam().id, 64, 48);
        fixture.work(titles.empty() ? 0 : IDCANCEL, [&](const Dialog& dialog) {
            const testing::ScopedTrace trace(__FILE__, __LINE__, language.name);
            const bool added = titles.emplace(dialog.title(), language.name).second;
            EXPECT_TRUE(added) << "the title is another language's";
            expectTextsFit(dialog.window());
        });
        const auto settings = fixture.settings();  // Levels makes a record of zeros before it opens.
        EXPECT_EQ(settings, std::vector<std::uint8_t>(settings.size()))
            << "neither the close command nor Cancel stores";
    }
}

INSTANTIATE_TEST_SUITE_P(Filters, DialogLanguages, testing::ValuesIn(dialogFilters),
                         [](const auto& instance) {
                             std::string name = instance.param.name;
                             std::ranges::replace(name, '-', '_');
                             return name;
                         });

}  // namespace
