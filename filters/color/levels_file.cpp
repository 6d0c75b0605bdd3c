// SPDX-License-Identifier: MIT
#include "filters/color/levels_file.h"

#include "host/qrb/file.h"

#include <string_view>

namespace Levels {
namespace {

constexpr std::u16string_view word = u"LVL";

// Files carry the first two letters alone.
constexpr std::uint32_t magicBytes = 4;

}  // namespace

bool loadFile(const std::u16string& path, Settings& settings) {
    QRB::File file;
    if (file.Create(path, QRB::kFileAccess_Read, QRB::kFileShare_Read, QRB::kFileDisposition_OpenExisting,
                    QRB::kFileAttributes_Normal, false) < 0) {
        return false;
    }
    // Read over the word itself, so what a short file lacks counts as right; the values behind it then are
    // missing.
    std::u16string magic(word);
    std::uint32_t done = 0;
    file.Read(magic.data(), magicBytes, &done);
    if (magic != word) return false;
    file.Read(&settings, sizeof settings, &done);
    return done == sizeof settings;
}

bool saveFile(const std::u16string& path, const Settings& settings) {
    QRB::File file;
    if (file.Create(path, QRB::kFileAccess_Write, QRB::kFileShare_None, QRB::kFileDisposition_CreateAlways,
                    QRB::kFileAttributes_Normal, false) < 0) {
        return false;
    }
    std::uint32_t done = 0;
    file.Write(word.data(), magicBytes, &done);
    file.Write(&settings, sizeof settings, &done);
    return true;
}

}  // namespace Levels
