// SPDX-License-Identifier: MIT
#include "app/media/referencing_formats.h"

#include "app/base/files.h"
#include "engine/error.h"

extern "C" {
#include <libavutil/avstring.h>
#include <libavutil/mem.h>
}

#include <fstream>
#include <sstream>

namespace vireo {
namespace {

struct NamedReach {
    std::string_view format;
    FormatReach reach;
};

constexpr NamedReach reaches[] = {
    {"hls", {Reach::Files, "an HLS playlist"}},
    {"concat", {Reach::List, "a list of files"}},
    {"dash", {Reach::Machine, "a DASH manifest"}},
    {"imf", {Reach::Machine, "an IMF package"}},
    {"vobsub", {Reach::Machine, "an index of subtitles"}},
    {"sdp", {Reach::Machine, "a description of a network session"}},
    {"rtp", {Reach::Machine, "a network session"}},
    {"rtsp", {Reach::Machine, "a network session"}},
    {"sap", {Reach::Machine, "a network session"}},
    {"avisynth", {Reach::Machine, "a script"}},
    {"vapoursynth", {Reach::Machine, "a script"}},
    {"lavfi", {Reach::Machine, "a filter graph"}},
    {"dvdvideo", {Reach::Machine, "a disc"}},
};

std::string beginOf(const std::filesystem::path& file, std::size_t size) {
    std::ifstream stream(file, std::ios::binary);
    std::string text(size, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(size));
    text.resize(static_cast<std::size_t>(stream.gcount()));
    return text;
}

}  // namespace

FormatReach reachOf(const AVInputFormat& format) {
    for (const NamedReach& named : reaches) {
        if (av_match_name(std::string(named.format).c_str(), format.name) != 0) return named.reach;
    }
    // Pictures are files all the same.
    const bool isDevice = (format.flags & AVFMT_NOFILE) != 0 && std::string_view(format.name) != "image2";
    return isDevice ? FormatReach{Reach::Machine, "a device"} : FormatReach{};
}

std::string formatsBeside(const AVInputFormat& format) {
    std::string names = format.name;
    void* state = nullptr;
    while (const AVInputFormat* other = av_demuxer_iterate(&state)) {
        if (reachOf(*other).reach == Reach::Itself) names.append(",").append(other->name);
    }
    return names;
}

std::string playlistFault(const std::filesystem::path& file) {
    constexpr std::string_view begin = "#EXTM3U";
    if (beginOf(file, begin.size()) != begin) return {};
    constexpr std::size_t longest = 16 << 20;
    const std::string text = beginOf(file, longest);
    const auto holds = [&](const char* tag) { return text.find(tag) != std::string::npos; };
    if (!holds("#EXT-X-ENDLIST") && !holds("#EXT-X-STREAM-INF"))
        return "is a playlist that has no end, as those of live broadcasts, and is not read";
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        constexpr std::string_view attribute = "URI=\"";
        if (const std::size_t at = line.find(attribute); line.starts_with('#') && at != std::string::npos) {
            line = line.substr(at + attribute.size());
            line = line.substr(0, line.find('"'));
        }
        if (line.starts_with('#')) continue;
        const char* const protocol = avio_find_protocol_name(line.c_str());
        const std::string_view named = protocol != nullptr ? protocol : "";
        if (named != "file" && named != "crypto" && named != "data" && !isAddress(line))
            return "names " + line + ", which is no file";
    }
    return {};
}

void checkFileList(const std::string& list, const InputFolder& folder) {
    constexpr char blanks[] = " \t\r";
    std::istringstream lines(readFile(list));
    for (std::string line; std::getline(lines, line);) {
        const char* at = line.c_str();
        const auto word = [&] {
            std::unique_ptr<char, ReleaseBy<av_free>> token(av_get_token(&at, blanks));
            if (token == nullptr) throw std::bad_alloc();
            return std::string(token.get());
        };
        if (word() != "file") continue;
        const std::string name = word();
        const std::filesystem::path file = pathOf(list).parent_path() / pathOf(name);
        const auto refuse = [&](const char* why) {
            throw Error(std::string(list).append(" names ").append(name).append(", which ").append(why));
        };
        if (isAddress(name) || !folder.holdsBelow(file)) refuse("does not lie below its folder");
        if (!std::filesystem::is_regular_file(file)) refuse("cannot be opened");
        // These open what lies beside them by themselves.
        constexpr std::string_view listBegin = "ffconcat version";
        const bool isSplit = file.extension() == ".y" || file.extension() == ".Y";
        if (isSplit || beginOf(file, listBegin.size()) == listBegin) refuse("names other files itself");
    }
}

}  // namespace vireo
