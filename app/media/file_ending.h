// SPDX-License-Identifier: MIT
// Whether inputs end before they should, where FFmpeg's libraries say nothing of it.
#ifndef VIREO_APP_MEDIA_FILE_ENDING_H
#define VIREO_APP_MEDIA_FILE_ENDING_H

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

namespace vireo {

/// Whether a JPEG or JPEG-LS picture breaks off before its end.
bool jpegBreaksOff(std::span<const std::uint8_t> picture);

/// Whether an OpenEXR picture of one part lacks a block that its table names.
bool exrBreaksOff(std::span<const std::uint8_t> picture);

bool qoiBreaksOff(std::span<const std::uint8_t> picture);

/// Whether a GIF file has no trailer behind its blocks.
bool gifBreaksOff(const std::filesystem::path& file);

/// Whether a transport stream ends within a packet.
bool transportStreamBreaksOff(const std::filesystem::path& file);

}  // namespace vireo

#endif
