// SPDX-License-Identifier: MIT
// Each adds a command to the command line; it is defined in the file of the command's name.
#ifndef VIREO_APP_COMMANDS_COMMANDS_H
#define VIREO_APP_COMMANDS_COMMANDS_H

#include "app/commands/command_set.h"

namespace vireo {

/// vireo list: the filters, as a table or as JSON.
void addListCommand(CommandSet& commands);

/// vireo info: one filter with its parameters, as text or as JSON.
void addInfoCommand(CommandSet& commands);

/// vireo presets: the ready-made looks, as a table or as JSON.
void addPresetsCommand(CommandSet& commands);

/// vireo render: one input to an output, or each of many into a folder.
void addRenderCommand(CommandSet& commands);

/// vireo batch: what a file of jobs describes.
void addBatchCommand(CommandSet& commands);

/// vireo probe: what inputs are understood to be.
void addProbeCommand(CommandSet& commands);

/// vireo compare: before and after in one picture.
void addCompareCommand(CommandSet& commands);

/// vireo preview: renders into a player's window.
void addPreviewCommand(CommandSet& commands);

/// vireo farm: one clip rendered in segments by shell lines.
void addFarmCommand(CommandSet& commands);

/// vireo export: a chain for FFmpeg, MLT or GStreamer.
void addExportCommand(CommandSet& commands);

/// vireo sheet: every filter over one picture.
void addSheetCommand(CommandSet& commands);

/// vireo settings: a filter's settings dialog over a picture.
void addSettingsCommand(CommandSet& commands);

/// vireo man: the manual page.
void addManCommand(CommandSet& commands);

/// vireo completion: the script that completes command lines in a shell, and the query that it makes.
void addCompletionCommand(CommandSet& commands);

}  // namespace vireo

#endif
