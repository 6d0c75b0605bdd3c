// SPDX-License-Identifier: MIT
// The suites that the host offers by name: arrays of function pointers, slot n at byte 8 n.
#ifndef VIREO_HOST_VRM_SUITES_H
#define VIREO_HOST_VRM_SUITES_H

#include "host/host_export.h"
#include "host/pixkit/frame_buffer.h"

#define VIREO_VPIX_SUITE "Vireo VPix Suite"
#define VIREO_VPIX_CREATOR_SUITE "Vireo VPix Creator Suite"
#define VIREO_VPIX_CREATOR_2_SUITE "Vireo VPix Creator 2 Suite"
#define VIREO_VPIX_BATCH_SUITE "Vireo VPix Batch Suite"
#define VIREO_TASK_SUITE "Vireo Task Suite"

/// Slots return a negative value on failure.
typedef int32_t VPixSuiteDispose(FrameBuffer* handle);
typedef int32_t VPixSuiteGetPixelFormat(FrameBuffer* handle, uint32_t* code);

typedef struct VPixSuite {
    VIREO_POINTER(VPixSuiteDispose) dispose;
    uint64_t hostData1[4];
    VIREO_POINTER(VPixSuiteGetPixelFormat) getPixelFormat;
} VPixSuite;

/// Copies each of `count` rectangles onto the one of the same index, in this order and as vpixCopy does. A
/// host that sees many at once can copy neighbours together.
typedef int32_t VPixBatchSuiteCopy(FrameBuffer* source, FrameBuffer* destination,
                                   const FrameRect* sourceRects, const FrameRect* destinationRects,
                                   int32_t count, uint32_t mode);

typedef struct VPixBatchSuite {
    VIREO_POINTER(VPixBatchSuiteCopy) copy;
} VPixBatchSuite;

/// Does [begin, end) of a task. Throws nothing.
typedef void TaskSuitePart(void* task, int32_t begin, int32_t end);

/// Calls part(task, begin, end) for ranges that are [0, length) together, in any order, on the caller's
/// thread and others of the host's, and returns when all have returned. A range is not shorter than `least`
/// (1 where that is less) unless it is the only one.
typedef int32_t TaskSuiteShare(TaskSuitePart* part, void* task, int32_t length, int32_t least);

typedef struct TaskSuite {
    VIREO_POINTER(TaskSuiteShare) share;
} TaskSuite;

/// Finds a suite. 0 with the suite written, or non-zero with null written when it is not offered. The host
/// owns the suite.
VIREO_HOST_C int32_t vrmAcquireSuite(const char* name, int32_t version, const void** suite);

#ifdef __cplusplus
static_assert(offsetof(VPixSuite, getPixelFormat) == 40);
#endif

#endif
