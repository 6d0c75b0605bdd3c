// SPDX-License-Identifier: MIT
// What the filters ask of the host's pixel library, without the filters.
#include "bench/bench.h"
#include "host/utilkit/utilkit.h"
#include "host/vireo_host.h"

#include <cmath>
#include <functional>
#include <numbers>

namespace bench {
namespace {

struct Buffers {
    FrameBuffer source;
    FrameBuffer destination;

    explicit Buffers(const Frames& frames)
        : source{{0, 0, frames.size.width, frames.size.height}, frames.size.width * 4, 0, frames.source},
          destination{source.bounds, source.rowBytes, 0, frames.destination} {}
};

void copy(Buffers& buffers, const FrameRect& from, const FrameRect& to, std::uint32_t mode) {
    vpixCopy(&buffers.source, &buffers.destination, &from, &to, mode);
}

/// Insets of up to 14 % along two and a half waves.
std::int32_t inset(int line, int lines, int length) {
    const double phase = 2.5 * 2 * std::numbers::pi * line / lines;
    return static_cast<std::int32_t>(0.07 * length * (1 + std::sin(phase)));
}

void growColumns(Buffers& buffers) {
    const auto [left, top, right, bottom] = buffers.source.bounds;
    for (int x = left; x < right; ++x) {
        const int s = inset(x, right, bottom);
        copy(buffers, {x, top + s, x + 1, bottom - s}, {x, top, x + 1, bottom}, VPixCopyReplaceColumns);
    }
}

void growRows(Buffers& buffers) {
    const auto [left, top, right, bottom] = buffers.source.bounds;
    for (int y = top; y < bottom; ++y) {
        const int s = inset(y, bottom, right);
        copy(buffers, {left + s, y, right - s, y + 1}, {left, y, right, y + 1}, VPixCopyReplace);
    }
}

void shrink(Buffers& buffers, std::int32_t width, std::int32_t height) {
    copy(buffers, buffers.source.bounds, {0, 0, width, height}, VPixCopyReplace);
}

const std::pair<const char*, void (*)(Buffers&)> jobs[] = {
    {"vpixCopy, whole frame", [](Buffers& b) { copy(b, b.source.bounds, b.source.bounds, VPixCopyReplace); }},
    {"vpixCopy, blended",
     [](Buffers& b) { copy(b, b.source.bounds, b.source.bounds, VPixCopyBlend | 0xBB); }},
    {"vpixCopy, half size",
     [](Buffers& b) { shrink(b, b.source.bounds.right / 2, b.source.bounds.bottom / 2); }},
    {"vpixCopy, a seventh",
     [](Buffers& b) { shrink(b, b.source.bounds.right / 7, b.source.bounds.bottom / 7); }},
    {"vpixCopy, preview", [](Buffers& b) { shrink(b, 240, 180); }},
    {"vpixCopy, threefold",
     [](Buffers& b) {
         const FrameRect& all = b.source.bounds;
         copy(b, {0, 0, all.right / 3, all.bottom / 3}, all, VPixCopyReplace);
     }},
    {"vpixCopy, growing columns", growColumns},
    {"vpixCopy, growing rows", growRows},
    {"vpixFillRect", [](Buffers& b) { vpixFillRect(&b.destination, &b.destination.bounds, 0x00FFFFFF); }},
    {"vpixNew and vpixDispose", [](Buffers& b) { vpixDispose(vpixNew(&b.source.bounds)); }},
    {"SmoothAlpha",
     [](Buffers& b) {
         SmoothAlpha(b.destination.pixels.get(), b.destination.rowBytes, b.destination.bounds.right,
                     b.destination.bounds.bottom);
     }},
};

}  // namespace

void addPixKit() {
    for (const auto& [name, job] : jobs) {
        add(name, ourselves, [work = job](Frames& frames) -> std::function<void()> {
            return [work, buffers = Buffers(frames)]() mutable { work(buffers); };
        });
    }
}

}  // namespace bench
