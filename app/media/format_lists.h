// SPDX-License-Identifier: MIT
// What outputs can be written with on this system.
#ifndef VIREO_APP_MEDIA_FORMAT_LISTS_H
#define VIREO_APP_MEDIA_FORMAT_LISTS_H

#include <string>
#include <vector>

namespace vireo {

struct ListedEncoder {
    std::string name, codec, description;
    std::vector<std::string> pixelFormats;  ///< Empty: any.
    int depth = 8;                          ///< The most bits per channel,
    bool alpha = false;                     ///< and whether some hold alpha.
};

struct ListedFormat {
    std::string name;  ///< As --format takes it.
    std::vector<std::string> endings;
    bool isPicture = false;
    std::string encoder, alphaEncoder;  ///< Where nothing is asked for.
    std::string description;
};

struct ListedPixelFormat {
    std::string name;
    std::string model;  ///< "RGB", "grey", or chroma as in "4:2:0".
    int depth = 8;
    bool alpha = false;
};

/// Throw Error where the system's codecs have no such names.
std::vector<ListedEncoder> listEncoders();
std::vector<ListedFormat> listFormats();
std::vector<ListedPixelFormat> listPixelFormats();

/// What reads and writes them, as lines with their versions.
std::string codecVersions();

}  // namespace vireo

#endif
