// SPDX-License-Identifier: MIT
// What a farm has to do, and how programs that run farms are told of it.
#ifndef VIREO_APP_COMMANDS_FARM_PLAN_H
#define VIREO_APP_COMMANDS_FARM_PLAN_H

#include "app/media/segment_join.h"

#include <functional>
#include <string>
#include <vector>

namespace vireo {

/// One command, which may run again at any time.
struct FarmTask {
    std::string name;
    std::string command;  ///< A line of a POSIX shell, for the folder in which the plan was made.
    std::vector<std::string> inputs;
    std::vector<std::string> outputs;       ///< Of a segment: what tells that it is done.
    std::vector<std::string> dependencies;  ///< Names of tasks that must be done before.
    Segment frames;                         ///< Of a segment.
    std::string numbers;                    ///< Of these frames, "A-B", as file names have them.
};

struct FarmPlan {
    std::string input;
    std::string output;
    std::string folder;         ///< Where segments lie.
    std::string markExtension;  ///< Of the files there that tell which of them are done.
    bool joins = true;          ///< Else segments are pictures, which only wait for the marks to be removed.
    std::vector<FarmTask> segments;
    FarmTask join;

    /// The command of the segment with these numbers, for programs that fill in the frames themselves.
    std::function<std::string(const std::string& numbers)> anySegment;
};

/// All tasks as JSON.
std::string planJson(const FarmPlan& plan);

/// A job template of Open Job Description, version 2023-09. Throws Error of wrong usage where the plan has
/// what a template cannot hold.
std::string openJobDescription(const FarmPlan& plan);

/// A Snakefile, whose first rule makes the output. Throws Error of wrong usage for names with braces.
std::string snakefile(const FarmPlan& plan);

/// Which segments are there, by their place in the plan: for people, and as JSON.
std::string statusText(const FarmPlan& plan, const std::vector<bool>& done, bool joined);
std::string statusJson(const FarmPlan& plan, const std::vector<bool>& done, bool joined);

}  // namespace vireo

#endif
