// SPDX-License-Identifier: MIT
#include "host/vrm/suites.h"

#include "host/hosting/worker_threads.h"
#include "host/pixkit/copy_rects.h"
#include "host/pixkit/pixel_formats.h"
#include "host/pixkit/pixkit.h"
#include "host/vireo_host.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <string_view>

namespace {

std::int32_t disposeFrame(FrameBuffer* handle) {
    vpixDispose(handle);
    return 0;
}

std::int32_t getPixelFormat(FrameBuffer* handle, std::uint32_t* code) {
    *code = PixKit::pixelFormat(handle);
    return 0;
}

const VPixSuite vpixSuite{disposeFrame, {}, getPixelFormat};

/// The creator suites offer the same buffers; no filter calls a slot of theirs.
const VPixSuite creatorSuite{disposeFrame, {}, getPixelFormat};

std::int32_t copyRects(FrameBuffer* source, FrameBuffer* destination, const FrameRect* sourceRects,
                       const FrameRect* destinationRects, std::int32_t count, std::uint32_t mode) {
    PixKit::copyRects(source, destination, sourceRects, destinationRects, count, mode);
    return 0;
}

const VPixBatchSuite batchSuite{copyRects};

std::int32_t share(TaskSuitePart* part, void* task, std::int32_t length, std::int32_t least) {
    const hosting::LentParts parts(length, std::max(least, 1));
    const auto run = [&](int i) { part(task, parts.begin(i), parts.end(i)); };
    parts.run(std::ref(run));
    return 0;
}

const TaskSuite taskSuite{share};

struct OfferedSuite {
    std::string_view name;
    std::int32_t version;
    const void* suite;
    std::atomic<bool> offered;
};

OfferedSuite suites[] = {
    {VIREO_VPIX_SUITE, 1, &vpixSuite, true},
    {VIREO_VPIX_CREATOR_SUITE, 1, &creatorSuite, true},
    {VIREO_VPIX_CREATOR_2_SUITE, 3, &creatorSuite, true},
    {VIREO_VPIX_BATCH_SUITE, 1, &batchSuite, true},
    {VIREO_TASK_SUITE, 1, &taskSuite, true},
};

}  // namespace

std::int32_t vrmAcquireSuite(const char* name, std::int32_t version, const void** suite) {
    *suite = nullptr;
    for (const OfferedSuite& candidate : suites) {
        if (candidate.name == name && candidate.version == version && candidate.offered) {
            *suite = candidate.suite;
            return 0;
        }
    }
    return -1;
}

void vireoHostOfferSuite(const char* name, std::int32_t offered) {
    for (OfferedSuite& candidate : suites) {
        if (candidate.name == name) candidate.offered = offered != 0;
    }
}
