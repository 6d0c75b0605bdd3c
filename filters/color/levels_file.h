// SPDX-License-Identifier: MIT
// Levels' parameter file: the bytes 4C 00 56 00 and the twenty values of the settings, 44 bytes in all.
#ifndef VIREO_FILTERS_COLOR_LEVELS_FILE_H
#define VIREO_FILTERS_COLOR_LEVELS_FILE_H

#include "filters/color/levels.h"

#include <string>

namespace Levels {

/// False when the file cannot be opened, is none of these or ends early; `settings` may then hold a part of
/// it. What follows behind the values is ignored, and any values are taken.
bool loadFile(const std::u16string& path, Settings& settings);

/// False when the file cannot be created.
bool saveFile(const std::u16string& path, const Settings& settings);

/// Asks for a file's name and loads or saves it; errors are shown. The windows are Win32 handles: the dialog
/// that owns the question, and the one that it is centred over. 1 when the file was read or written, 0 after
/// Cancel or an error. Windows only.
int LoadSaveLevelsFile(void* owner, bool load, Settings* settings, void* centerOver);

}  // namespace Levels

#endif
