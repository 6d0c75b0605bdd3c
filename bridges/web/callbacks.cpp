// SPDX-License-Identifier: MIT
// The functions that the engine calls back: scripts have none to give, so the program takes them from its
// surroundings.
#include "vireo/vireo.h"

extern "C" __attribute__((import_module("vireo"), import_name("earlierFrame"))) VireoEarlierFrame askForFrame;
extern "C" __attribute__((import_module("vireo"), import_name("isCancelled"))) int32_t askForEnd(void* user);

extern "C" __attribute__((export_name("vireo_earlier_frame"))) VireoEarlierFrame* earlierFrame() {
    return askForFrame;
}

extern "C" __attribute__((export_name("vireo_is_cancelled"))) int32_t (*isCancelled())(void* user) {
    return askForEnd;
}
