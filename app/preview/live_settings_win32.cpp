// SPDX-License-Identifier: MIT
#include "app/preview/live_settings.h"

#include "host/win32.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <exception>

namespace vireo {
namespace {

constexpr UINT lookMilliseconds = 40;

/// Timers without a window tell nothing but their number.
LiveSettings* living = nullptr;

std::size_t rowBytes(const Picture& picture) {
    return std::size_t{4} * static_cast<std::size_t>(picture.width());
}

bool isEqual(const Picture& one, const Picture& other) {
    for (int y = 0; y < one.height(); ++y)
        if (std::memcmp(one.row(y), other.row(y), rowBytes(one)) != 0) return false;
    return true;
}

void copy(const Picture& from, Picture& to) {
    for (int y = 0; y < to.height(); ++y) std::memcpy(to.row(y), from.row(y), rowBytes(to));
}

}  // namespace

LiveSettings::LiveSettings(FrameShelf& clip, Picture& source, const Picture& scratch,
                           const std::string& title)
    : clip_(clip),
      source_(source),
      scratch_(scratch),
      shown_(std::make_shared<Picture>(source.width(), source.height())),
      window_(*this, title, source.width(), source.height(), 1) {
    copy(source_, *shown_);
    window_.show(shown_, {});
    living = this;
    timer_ = SetTimer(nullptr, 0, lookMilliseconds, [](HWND, UINT, UINT_PTR, DWORD) {
        if (living != nullptr) living->look();
    });
}

LiveSettings::~LiveSettings() {
    KillTimer(nullptr, timer_);
    living = nullptr;
}

void LiveSettings::step(int frames) {
    isPlaying_ = false;
    wished_ += frames;
}

void LiveSettings::skip(double seconds) { wished_ += std::llround(seconds * clip_.frameRate()); }

void LiveSettings::jump(double share) {
    wished_ = std::llround(share * static_cast<double>(std::max<std::int64_t>(0, clip_.frameCount() - 1)));
}

void LiveSettings::look() {
    if (isClosed_) return;
    if (isPlaying_) ++wished_;
    std::int64_t wished = std::max<std::int64_t>(0, wished_);
    if (clip_.frameCount() > 0) wished = std::min(wished, clip_.frameCount() - 1);
    wished_ = wished;
    if (wished != frame_) goTo(wished);
    if (isEqual(scratch_, *shown_)) return;
    shown_ = std::make_shared<Picture>(source_.width(), source_.height());
    copy(scratch_, *shown_);
    window_.show(shown_, clip_.frameCount() == 1 ? "" : std::to_string(frame_));
}

void LiveSettings::goTo(std::int64_t frame) {
    frame_ = frame;
    try {
        const PicturePtr picture = clip_.frame(frame);
        if (picture->width() != source_.width() || picture->height() != source_.height()) return;
        copy(*picture, source_);
    } catch (const std::exception&) {
        isPlaying_ = false;  // the frame before stays
        return;
    }
    // The dialogs render when they are painted.
    EnumThreadWindows(
        GetCurrentThreadId(),
        [](HWND window, LPARAM) -> BOOL {
            InvalidateRect(window, nullptr, FALSE);
            return TRUE;
        },
        0);
}

}  // namespace vireo
