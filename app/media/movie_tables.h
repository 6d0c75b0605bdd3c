// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_MOVIE_TABLES_H
#define VIREO_APP_MEDIA_MOVIE_TABLES_H

#include <filesystem>

namespace vireo {

/// Whether the tables of an MP4 or MOV file announce more samples than a file of its size can hold: a few
/// bytes can announce billions, for each of which a reader keeps an entry.
bool announcesTooManySamples(const std::filesystem::path& movie);

}  // namespace vireo

#endif
