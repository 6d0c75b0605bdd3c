// SPDX-License-Identifier: MIT
// The module's layer over the host's VPix suites: each is acquired when it is first needed and kept.
#ifndef VIREO_FRAMEWORK_VPIX_SUITES_H
#define VIREO_FRAMEWORK_VPIX_SUITES_H

#include "host/qrb/exceptions.h"
#include "host/vrm/suites.h"

namespace VSK {

class NullVPixSuiteException final : public QRB::Exception {
public:
    const char* what() const noexcept override { return "Null VPix Suite"; }
};

class NullVPixCreatorSuiteException final : public QRB::Exception {
public:
    const char* what() const noexcept override { return "Null VPix Creator Suite"; }
};

class NullVPixCreator2SuiteException final : public QRB::Exception {
public:
    const char* what() const noexcept override { return "Null VPix Creator2 Suite"; }
};

}  // namespace VSK

/// The suites; throw the matching exception while the host does not offer them. No filter makes buffers by
/// the creator suites yet; whoever adds one that does finds them here.
const VPixSuite* AcquireVPixSuite();
const void* AcquireVPixCreatorSuite();
const void* AcquireVPixCreator2Suite();

/// The same for callers that can do without: null instead of an exception.
const VPixSuite* FindVPixSuite();
const void* FindVPixCreatorSuite();
const void* FindVPixCreator2Suite();
const VPixBatchSuite* FindVPixBatchSuite();

/// Holds a VPix handle. Only reset() disposes one.
class ScopedVPix {
public:
    ScopedVPix() = default;
    explicit ScopedVPix(FrameBuffer* handle) : handle_(handle) {}
    ScopedVPix(const ScopedVPix&) = delete;
    ScopedVPix& operator=(const ScopedVPix&) = delete;

    FrameBuffer* get() const { return handle_; }

    FrameBuffer* release() {
        FrameBuffer* handle = handle_;
        handle_ = nullptr;
        return handle;
    }

    /// Disposes a live handle through the suite, then holds the new one. Throws as AcquireVPixSuite does, and
    /// QRB::SuiteCallFailed.
    void reset(FrameBuffer* handle);

private:
    FrameBuffer* handle_ = nullptr;
};

/// The format code of a frame; "badf" where the host leaves it open. Throws as AcquireVPixSuite does, and
/// QRB::SuiteCallFailed.
std::uint32_t QueryPixelFormat(const ScopedVPix& frame);

#endif
