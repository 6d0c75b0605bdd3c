// SPDX-License-Identifier: MIT
// What became of renders, or would become of them, for people and for programs.
#ifndef VIREO_APP_COMMANDS_RENDER_REPORT_H
#define VIREO_APP_COMMANDS_RENDER_REPORT_H

#include "app/render/render_media.h"
#include "engine/settings/filter_settings.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace vireo {

/// What became of one job.
struct RenderOutcome {
    std::string input;
    std::vector<std::string> outputs;  ///< Their names.
    int status = 0;
    bool isSkipped = false;  ///< Its output was there.
    std::string error;       ///< Where it failed,
    RenderSummary summary;   ///< and where it did not.
    std::vector<Message> messages;
};

/// Of a command that renders.
struct RenderReport {
    bool isDryRun = false;
    std::size_t job = 0;  ///< Its number in a batch, from 1.
    int status = 0;
    std::string error;  ///< Where no job was begun.
    std::vector<FilterSettings> chain;
    std::vector<RenderOutcome> outcomes;
    std::size_t planned = 0;              ///< How many outcomes there are where nothing interrupts.
    std::vector<std::string> passedOver;  ///< Files of folders that are neither pictures nor video.
};

struct RenderCounts {
    std::int64_t done = 0, skipped = 0, failed = 0;
};

RenderCounts countsOf(const std::vector<RenderOutcome>& outcomes);

/// Of a command that renders what a file describes.
struct BatchReport {
    bool isDryRun = false;
    int status = 0;
    std::string error;               ///< Where no job was read.
    std::vector<RenderReport> jobs;  ///< Those that are wrong, where any is.
};

/// On standard output.
void printReport(const RenderReport& report, bool asJson);
void printReport(const BatchReport& report, bool asJson);

nlohmann::ordered_json inputJson(const InputDescription& input);
nlohmann::ordered_json messagesJson(const std::vector<Message>& messages);
void printInput(const InputDescription& input);
void printMessages(const std::vector<Message>& messages);

}  // namespace vireo

#endif
