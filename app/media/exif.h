// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_EXIF_H
#define VIREO_APP_MEDIA_EXIF_H

#include <cstdint>
#include <filesystem>
#include <span>

namespace vireo {

/// The orientation tag, 1 to 8, of the EXIF record in a JPEG, PNG, WebP or TIFF file; 1 where there is none.
int exifOrientationTag(std::span<const std::uint8_t> file);

/// The same of a file on disk.
int exifOrientationTag(const std::filesystem::path& file);

}  // namespace vireo

#endif
