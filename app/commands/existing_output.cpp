// SPDX-License-Identifier: MIT
#include "app/commands/existing_output.h"

#include "app/base/files.h"
#include "app/media/sequence_pattern.h"
#include "app/render/render_media.h"

#include <algorithm>

namespace vireo {

namespace {

bool isWhole(const RenderJob& job, FrameProcessor& chain) {
    std::error_code error;
    if (job.output == "-") return false;
    if (std::filesystem::is_regular_file(pathOf(job.output), error)) return true;
    const auto pattern = SequencePattern::parse(job.output);
    if (!pattern) return false;
    const std::vector<std::int64_t> numbers = pattern->existing();
    if (numbers.empty()) return false;

    RenderJob looking = job;
    looking.dryRun = looking.overwrite = true;
    looking.alsoTo.clear();
    Messages silent(true);
    const MediaDescription media = renderMedia(looking, chain, silent).media;
    const std::int64_t count = media.input.framesExpected;
    const std::filesystem::path firstName = pathOf(media.outputs.front().firstFile).filename();
    const auto first = std::find_if(numbers.begin(), numbers.end(),
                                    [&](std::int64_t number) { return pattern->name(number) == firstName; });
    // They stand in order, so that the last one is in its place only where none is missing before it.
    return count > 0 && numbers.end() - first >= count && first[count - 1] == *first + count - 1;
}

}  // namespace

bool isWholeOutput(const RenderJob& job, FrameProcessor& chain) {
    return isWhole(job, chain) && std::all_of(job.alsoTo.begin(), job.alsoTo.end(),
                                              [&](const RenderJob& other) { return isWhole(other, chain); });
}

}  // namespace vireo
