// SPDX-License-Identifier: MIT
// vireo settings: a filter's own settings dialog over a picture.
#include "app/base/files.h"
#include "app/commands/commands.h"
#include "engine/error.h"
#include "engine/settings/settings_file.h"
#include "host/hosting/filter_instance.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <optional>

#if defined(_WIN32)
#include "app/preview/live_settings.h"
#include "host/win32.h"
#endif

namespace vireo {
namespace {

struct DialogOptions {
    std::string filter, image;
    std::string settings;      ///< Where to start from; empty: the filter's own defaults.
    std::string saveSettings;  ///< Empty: standard output.
    bool overwrite = false;
    bool preview = false;
};

#if defined(_WIN32)

/// Sees whether a dialog opens on this thread: filters that have none answer Setup as if it had been
/// accepted.
class DialogWatch {
public:
    DialogWatch() : hook_(SetWindowsHookExW(WH_CBT, watch, nullptr, GetCurrentThreadId())) { opened = false; }
    DialogWatch(const DialogWatch&) = delete;
    DialogWatch& operator=(const DialogWatch&) = delete;
    ~DialogWatch() { UnhookWindowsHookEx(hook_); }

    bool sawDialog() const { return opened; }

private:
    static LRESULT CALLBACK watch(int code, WPARAM window, LPARAM data) {
        constexpr wchar_t dialogClass[] = L"#32770";
        wchar_t name[16] = {};
        if (code == HCBT_CREATEWND && GetClassNameW(reinterpret_cast<HWND>(window), name, 16) != 0 &&
            std::wcscmp(name, dialogClass) == 0) {
            opened = true;
        }
        return CallNextHookEx(nullptr, code, window, data);
    }

    static inline bool opened = false;
    HHOOK hook_;
};

FilterSettings startingSettings(const Catalogue& catalogue, const DialogOptions& options) {
    const hosting::Filter& filter = catalogue.find(options.filter);
    if (options.settings.empty()) return FilterSettings(filter);
    const auto chain = parseSettings(catalogue, options.settings, readFile(options.settings));
    if (chain.size() != 1 || &chain.front().filter() != &filter) {
        throw Error(Fault::Usage,
                    options.settings + " does not hold the settings of one " + filter.properties.name);
    }
    return chain.front();
}

PicturePtr firstFrame(FrameShelf& clip, const std::string& file) {
    try {
        return clip.frame(0);
    } catch (const DamagedFrame& damage) {
        throw Error(file + " cannot be read: " + damage.what());
    }
}

void editSettings(const Catalogue& catalogue, const DialogOptions& options) {
    const FilterSettings start = startingSettings(catalogue, options);
    const std::string& name = start.filter().properties.name;
    FrameShelf clip(options.image);
    const PicturePtr first = firstFrame(clip, options.image);
    Picture picture(first->width(), first->height()), scratch(first->width(), first->height());
    for (int y = 0; y < picture.height(); ++y) {
        for (Picture* copy : {&picture, &scratch})
            std::copy_n(first->row(y), 4 * picture.width(), copy->row(y));
    }

    hosting::FilterInstance instance(start.filter().entry);
    const auto record = start.record({});
    std::copy(record.begin(), record.end(), instance.settings().begin());
    const DialogWatch dialog;
    std::optional<LiveSettings> live;
    if (options.preview) live.emplace(clip, picture, scratch, name);
    const std::int32_t result = instance.setup(picture.buffer(), scratch.buffer());
    live.reset();
    if (!dialog.sawDialog()) throw Error(name + " has no settings dialog; give its values with -f");
    if (result != 0) throw Error("the dialog was cancelled, so nothing is saved");

    FilterSettings accepted(start.filter());
    accepted.setBytes(instance.settings());
    accepted.assignFromBytes();
    const std::string text = settingsText({accepted});
    if (options.saveSettings.empty()) {
        std::cout << text;
    } else {
        writeFile(options.saveSettings, text, options.overwrite);
    }
}

#else

void editSettings(const Catalogue& catalogue, const DialogOptions& options) {
    const std::string& name = catalogue.find(options.filter).properties.name;
    throw Error("settings dialogs open on Windows alone; give " + name +
                " its values with -f, and vireo info \"" + name + "\" tells which it takes");
}

#endif

}  // namespace

void addSettingsCommand(CommandSet& commands) {
    const auto options = std::make_shared<DialogOptions>();
    CLI::App& command = commands.add("settings", "Open a filter's settings dialog over a picture (Windows)",
                                     [options](Session& session) {
                                         editSettings(session.catalogue(), *options);
                                         return 0;
                                     });
    command.add_option("filter", options->filter, "Its name or the beginning of it, key, match name or id")
        ->required()
        ->type_name("FILTER");
    command
        .add_option("--image", options->image, "The picture, or a clip, of which the first frame is taken")
        ->required()
        ->type_name("FILE");
    command.add_option("--settings", options->settings, "A settings file to start from")->type_name("FILE");
    command
        .add_option("--save-settings", options->saveSettings,
                    "Where to write what was accepted, else to standard output")
        ->type_name("FILE");
    command.add_flag("--overwrite", options->overwrite, "Replace what exists");
    command.add_flag(
        "--preview", options->preview,
        "Show in a window beside, in full size, what the dialog makes of the picture; its keys are "
        "those of vireo preview");
    command.footer("Example:\n  vireo settings Levels --image photo.png --save-settings look.json");
}

}  // namespace vireo
