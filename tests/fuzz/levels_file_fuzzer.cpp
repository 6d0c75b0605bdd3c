// SPDX-License-Identifier: MIT
// Levels' files as its dialog and as the command line read them: both take the same ones, and any values make
// tables.
#include "engine/error.h"
#include "engine/settings/settings_file.h"
#include "filters/color/levels_file.h"
#include "tests/fuzz/require.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // A file in memory that can be opened by its name.
    static const int file = memfd_create("levels", 0);
    static const std::string path = "/proc/self/fd/" + std::to_string(file);
    static const std::u16string dialogPath(path.begin(), path.end());
    const std::string_view content(reinterpret_cast<const char*>(data), size);
    REQUIRE(ftruncate(file, 0) == 0 && pwrite(file, data, size, 0) == std::ssize(content));
    Levels::Settings settings;
    const bool loaded = Levels::loadFile(dialogPath, settings);
    const auto bytes = readOrRefused<vireo::Error>([&] { return vireo::parseLevelsFile("input", content); });
    REQUIRE(loaded == bytes.has_value());
    if (!loaded) return 0;
    REQUIRE(bytes->size() == sizeof settings && std::memcmp(bytes->data(), &settings, sizeof settings) == 0);
    for (const Levels::Channel& channel : {settings.red, settings.green, settings.blue})
        REQUIRE(Levels::buildTable(channel, settings.master) == Levels::buildTable(channel, settings.master));
    REQUIRE(Levels::saveFile(dialogPath, settings));
    char saved[2 * sizeof settings];
    const ssize_t length = pread(file, saved, sizeof saved, 0);
    REQUIRE(length > 0 && std::string_view(saved, static_cast<std::size_t>(length)) == content.substr(0, 44));
    return 0;
}
