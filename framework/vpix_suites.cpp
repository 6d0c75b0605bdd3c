// SPDX-License-Identifier: MIT
#include "framework/vpix_suites.h"

#include "framework/cached_suite.h"

namespace {

constexpr std::uint32_t unknownFormat = 0x66646162;  // "badf"

CachedSuite vpixSuite(VIREO_VPIX_SUITE, 1);
CachedSuite vpixCreatorSuite(VIREO_VPIX_CREATOR_SUITE, 1);
CachedSuite vpixCreator2Suite(VIREO_VPIX_CREATOR_2_SUITE, 3);
CachedSuite vpixBatchSuite(VIREO_VPIX_BATCH_SUITE, 1);

void check(std::int32_t result) {
    if (result < 0) throw QRB::SuiteCallFailed();
}

}  // namespace

const VPixSuite* AcquireVPixSuite() {
    return static_cast<const VPixSuite*>(vpixSuite.acquire<VSK::NullVPixSuiteException>());
}

const void* AcquireVPixCreatorSuite() {
    return vpixCreatorSuite.acquire<VSK::NullVPixCreatorSuiteException>();
}

const void* AcquireVPixCreator2Suite() {
    return vpixCreator2Suite.acquire<VSK::NullVPixCreator2SuiteException>();
}

const VPixSuite* FindVPixSuite() { return static_cast<const VPixSuite*>(vpixSuite.find()); }

const void* FindVPixCreatorSuite() { return vpixCreatorSuite.find(); }

const void* FindVPixCreator2Suite() { return vpixCreator2Suite.find(); }

const VPixBatchSuite* FindVPixBatchSuite() {
    return static_cast<const VPixBatchSuite*>(vpixBatchSuite.find());
}

void ScopedVPix::reset(FrameBuffer* handle) {
    FrameBuffer* old = release();
    if (old != nullptr) check(AcquireVPixSuite()->dispose.get()(old));
    handle_ = handle;
}

std::uint32_t QueryPixelFormat(const ScopedVPix& frame) {
    std::uint32_t code = unknownFormat;
    check(AcquireVPixSuite()->getPixelFormat.get()(frame.get(), &code));
    return code;
}
