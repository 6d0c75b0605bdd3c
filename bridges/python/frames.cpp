// SPDX-License-Identifier: MIT
#include "bridges/python/frames.h"

#include "bridges/python/error.h"

#include <cstring>
#include <limits>
#include <vector>

namespace py = pybind11;

namespace vireo::python {
namespace {

VireoDepth depthOf(const py::buffer_info& memory) {
    if (memory.format == "B") return VireoDepth8;
    if (memory.format == "H") return VireoDepth16;
    if (memory.format == "f") return VireoDepthFloat;
    throw Failure("a frame's numbers are uint8, uint16 or float32");
}

const char* formatOf(VireoDepth depth) {
    switch (depth) {
        case VireoDepth16: return "H";
        case VireoDepthFloat: return "f";
        default: return "B";
    }
}

py::ssize_t channelsOf(const py::buffer_info& memory) {
    const py::ssize_t channels = memory.ndim == 3 ? memory.shape[2] : 1;
    const bool isFrame = memory.ndim == 2 || (memory.ndim == 3 && (channels == 3 || channels == 4));
    if (!isFrame) throw Failure("a frame is height x width, or that x 3 or 4");
    return channels;
}

VireoLayout layoutOf(py::ssize_t channels, bool isBgr) {
    switch (channels) {
        case 3: return isBgr ? VireoBgr : VireoRgb;
        case 4: return isBgr ? VireoBgra : VireoRgba;
        default: return VireoGrey;
    }
}

py::ssize_t channelsOf(VireoLayout layout) {
    switch (layout) {
        case VireoGrey: return 1;
        case VireoRgb:
        case VireoBgr: return 3;
        default: return 4;
    }
}

/// A frame's memory, to be written.
py::memoryview viewOf(const VireoFrame& frame) {
    const py::ssize_t item = frame.depth / 8, channels = channelsOf(frame.layout);
    std::vector<py::ssize_t> shape{frame.height, frame.width, channels};
    std::vector<py::ssize_t> strides{static_cast<py::ssize_t>(frame.stride), channels * item, item};
    if (channels == 1) {
        shape.pop_back();
        strides.pop_back();
    }
    return py::memoryview::from_buffer(frame.pixels, item, formatOf(frame.depth), shape, strides);
}

}  // namespace

ArrayFrame::ArrayFrame(const py::buffer& array, bool isWritten, const PixelOrder& order)
    : memory_(array.request(isWritten)) {
    const py::ssize_t channels = channelsOf(memory_), item = memory_.itemsize;
    const bool isSideBySide =
        memory_.strides[1] == channels * item && (memory_.ndim == 2 || memory_.strides[2] == item);
    if (!isSideBySide) throw Failure("the numbers of a frame's row do not lie side by side");
    constexpr py::ssize_t most = std::numeric_limits<int32_t>::max();
    if (memory_.shape[0] > most || memory_.shape[1] > most) throw Failure("a frame is too large");

    frame_.structSize = sizeof frame_;
    frame_.height = static_cast<int32_t>(memory_.shape[0]);
    frame_.width = static_cast<int32_t>(memory_.shape[1]);
    frame_.layout = layoutOf(channels, order.isBgr);
    frame_.depth = depthOf(memory_);
    frame_.premultiplied = order.isPremultiplied ? 1 : 0;
    frame_.pixels = memory_.ptr;
    frame_.stride = memory_.strides[0];
}

VireoRenderOptions EarlierFrames::options() {
    VireoRenderOptions options{};
    options.structSize = sizeof options;
    if (!function_.is_none()) options.earlierFrame = fetch;
    options.user = this;
    return options;
}

void EarlierFrames::rethrow() const {
    if (raised_ != nullptr) std::rethrow_exception(raised_);
}

int32_t EarlierFrames::fetch(void* self, int64_t number, const VireoFrame* target, VireoTime*) {
    auto& frames = *static_cast<EarlierFrames*>(self);
    const py::gil_scoped_acquire lock;
    try {
        return frames.function_(number, viewOf(*target)).cast<bool>() ? 0 : 1;
    } catch (...) {
        frames.raised_ = std::current_exception();
        return 1;
    }
}

}  // namespace vireo::python
