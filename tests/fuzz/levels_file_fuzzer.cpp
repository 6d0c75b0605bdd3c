// SPDX-License-Identifier: MIT
// Levels' files as its dialog and as the command line read them: both take the same ones, and any values make
// tables.
#include "engine/error.h"
#include "engine/settings/settings_file.h"
#include "filters/color/levels_file.h"
#include "tests/fuzz/require.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

namespace {

/// A file in memory that can be opened by its name.
class MemoryFile {
public:
    std::u16string path() const { return path_; }

    void write(std::string_view content) const {
        REQUIRE(ftruncate(descriptor_, 0) == 0);
        REQUIRE(pwrite(descriptor_, content.data(), content.size(), 0) ==
                static_cast<ssize_t>(content.size()));
    }

    std::string content() const {
        std::string bytes(static_cast<std::size_t>(lseek(descriptor_, 0, SEEK_END)), '\0');
        REQUIRE(pread(descriptor_, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()));
        return bytes;
    }

private:
    int descriptor_ = memfd_create("levels", 0);
    std::u16string path_ = [this] {
        const std::string path = "/proc/self/fd/" + std::to_string(descriptor_);
        return std::u16string(path.begin(), path.end());
    }();
};

std::optional<std::vector<std::uint8_t>> readByTheCommandLine(std::string_view content) {
    try {
        return vireo::parseLevelsFile("input", content);
    } catch (const vireo::Error& error) {
        REQUIRE(*error.what() != '\0');
        return std::nullopt;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const MemoryFile file;
    const std::string_view content(reinterpret_cast<const char*>(data), size);
    file.write(content);
    Levels::Settings settings;
    const bool loaded = Levels::loadFile(file.path(), settings);
    const auto bytes = readByTheCommandLine(content);
    REQUIRE(loaded == bytes.has_value());
    if (!loaded) return 0;
    REQUIRE(bytes->size() == sizeof settings && std::memcmp(bytes->data(), &settings, sizeof settings) == 0);

    for (const Levels::Channel& channel : {settings.red, settings.green, settings.blue}) {
        const ChannelTable table = Levels::buildTable(channel, settings.master);
        REQUIRE(table == Levels::buildTable(channel, settings.master));
    }
    REQUIRE(Levels::saveFile(file.path(), settings));
    REQUIRE(file.content() == content.substr(0, 44));
    return 0;
}
