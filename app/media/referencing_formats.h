// SPDX-License-Identifier: MIT
// The formats that name other files or addresses.
#ifndef VIREO_APP_MEDIA_REFERENCING_FORMATS_H
#define VIREO_APP_MEDIA_REFERENCING_FORMATS_H

#include "app/media/ffmpeg_objects.h"
#include "app/media/input_policy.h"

#include <string>

namespace vireo {

enum class Reach {
    Itself,   ///< The input alone.
    Files,    ///< Other files, each of which is opened through the input's own context.
    List,     ///< The same, through contexts of the libraries' own.
    Machine,  ///< What cannot be kept to a folder: networks, devices, scripts.
};

struct FormatReach {
    Reach reach = Reach::Itself;
    const char* kind = nullptr;  ///< "an HLS playlist".
};

FormatReach reachOf(const AVInputFormat& format);

/// The formats that reach nothing else, and that one, as the libraries take them.
std::string formatsBeside(const AVInputFormat& format);

/// Why a playlist is not read although it may name files, as the end of a sentence; empty for other files. A
/// reader would wait for more where it has no end, and pass over in silence what is no file.
std::string playlistFault(const std::filesystem::path& file);

/// Throws Error where a list names what does not lie below its folder, or another list.
void checkFileList(const std::string& list, const InputFolder& folder);

}  // namespace vireo

#endif
