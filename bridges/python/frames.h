// SPDX-License-Identifier: MIT
// Arrays as the engine's frames.
#ifndef VIREO_PYTHON_FRAMES_H
#define VIREO_PYTHON_FRAMES_H

#include "vireo/vireo.h"

#include <pybind11/pybind11.h>

#include <exception>

namespace vireo::python {

/// How the numbers of an array are meant.
struct PixelOrder {
    bool isBgr;
    bool isPremultiplied;
};

/// An array's memory as a frame; the array keeps it while this lives. Its numbers are of C's types `unsigned
/// char`, `unsigned short` or `float`, and those of a row lie side by side. Throws Failure.
class ArrayFrame {
public:
    ArrayFrame(const pybind11::buffer& array, bool isWritten, const PixelOrder& order);

    const VireoFrame& frame() const { return frame_; }

private:
    pybind11::buffer_info memory_;
    VireoFrame frame_{};
};

/// Asks a function of Python's for earlier frames: `function(number, memoryview)` fills the view, and answers
/// False for a frame that is not there.
class EarlierFrames {
public:
    explicit EarlierFrames(pybind11::object function) : function_(std::move(function)) {}

    VireoRenderOptions options();

    /// Throws what the function raised.
    void rethrow() const;

private:
    static int32_t fetch(void* self, int64_t number, const VireoFrame* target, VireoTime* time);

    pybind11::object function_;
    std::exception_ptr raised_;
};

}  // namespace vireo::python

#endif
