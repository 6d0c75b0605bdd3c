// SPDX-License-Identifier: MIT
// The commands. Each throws RenderError, or any std::exception, where it fails.
#ifndef VIREO_APP_COMMANDS_COMMANDS_H
#define VIREO_APP_COMMANDS_COMMANDS_H

#include "app/commands/options.h"
#include "app/settings/catalogue.h"

namespace vireo {

/// Prints the filters, as a table or as JSON.
void listFilters(const Catalogue& catalogue, const ListOptions& options);

/// Prints one filter with its parameters, as text or as JSON.
void describeFilter(const Catalogue& catalogue, const InfoOptions& options);

/// Renders one input to an output, or each of many into a folder. Returns the exit status: of many inputs
/// some may have failed, which has been said then.
int renderFiles(const Catalogue& catalogue, const GlobalOptions& global, const RenderOptions& options);

/// Prints shell lines that render one input in segments and join them.
void planFarm(const Catalogue& catalogue, const GlobalOptions& global, const FarmOptions& options);

/// Joins the segments of a plan that was given the same options.
void joinFarm(const Catalogue& catalogue, const GlobalOptions& global, const FarmOptions& options);

/// Renders the contact sheet of all filters over a picture.
void renderSheet(const Catalogue& catalogue, const GlobalOptions& global, const SheetOptions& options);

/// Opens the filter's settings dialog over a picture and writes what was accepted as a settings file.
void editSettings(const Catalogue& catalogue, const DialogOptions& options);

/// "vireo: SENTENCE" on a line of standard error.
void printError(const char* sentence);

}  // namespace vireo

#endif
