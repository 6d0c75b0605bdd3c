// SPDX-License-Identifier: MIT
// The function that the engine calls for earlier frames: scripts have none to give, so the program takes one
// from its surroundings.
#include "vireo/vireo.h"

extern "C" __attribute__((import_module("vireo"), import_name("earlierFrame"))) VireoEarlierFrame askScript;

extern "C" __attribute__((export_name("vireo_earlier_frame"))) VireoEarlierFrame* earlierFrame() {
    return askScript;
}
