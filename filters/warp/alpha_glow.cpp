// SPDX-License-Identifier: MIT
// Grows a coloured halo out of the opaque parts of the picture, ring by ring: each ring is a pixel wide and
// is blended into what lies just outside of all that is solid or glows already.
#include "filters/warp/alpha_glow_kernels.h"
#include "framework/filter.h"
#include "framework/frame_view.h"
#include "framework/registration_order.h"

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <new>

namespace AlphaGlow {
namespace {

/// Colours carry red in the low byte.
struct Settings {
    std::uint32_t glow;        ///< Rings; cut to 16 bits.
    std::uint32_t brightness;  ///< 0 to 255; cut to 16 bits.
    std::uint32_t startColor;
    std::uint32_t endColor;
    std::uint8_t useEndColor;
    std::uint8_t fadeOut;

    template <class Visit>
    void fields(Visit&& visit) {
        visit(glow);
        visit(brightness);
        visit(startColor);
        visit(endColor);
        visit(useEndColor);
        visit(fadeOut);
    }
};

const AlphaGlowKernels& kernels = alphaGlowKernelsTables.chosen();

/// Red, green and blue in 16.16.
class FixedColor {
public:
    FixedColor() = default;
    explicit FixedColor(std::uint32_t color) {
        for (int i = 0; i < 3; ++i) channels_[i] = static_cast<std::int32_t>((color >> 8 * i & 0xFF) << 16);
    }

    /// map(a, b) of each channel.
    template <class Map>
    static FixedColor map(const FixedColor& a, const FixedColor& b, Map&& map) {
        FixedColor result;
        for (int i = 0; i < 3; ++i) result.channels_[i] = map(a.channels_[i], b.channels_[i]);
        return result;
    }

    std::uint32_t pixel() const {
        const auto byte = [this](int i) { return static_cast<std::uint32_t>(channels_[i] >> 16 & 0xFF); };
        return byte(0) << 16 | byte(1) << 8 | byte(2);
    }

private:
    std::array<std::int32_t, 3> channels_{};
};

FixedColor operator-(const FixedColor& a, const FixedColor& b) {
    return FixedColor::map(a, b, [](std::int32_t x, std::int32_t y) { return x - y; });
}

FixedColor perStep(const FixedColor& way, std::int32_t steps) {
    return FixedColor::map(way, {}, [steps](std::int32_t x, std::int32_t) { return x / steps; });
}

/// Where the colour is after the first half of the rings. Rings that fade leave the start behind sooner.
FixedColor middleColor(const FixedColor& start, const FixedColor& end, bool fadeOut) {
    return FixedColor::map(start, end, [fadeOut](std::int32_t s, std::int32_t e) {
        return fadeOut ? s + 2 * (e - s) / 3 : s - (s - e) / 2;
    });
}

/// The two masks of a frame, a bit for each pixel: what is solid or glows, from which the next ring grows,
/// and what glows.
class GlowMasks {
public:
    GlowMasks(std::int64_t width, std::int64_t height)
        : width_(static_cast<std::size_t>(width)),
          height_(static_cast<std::size_t>(height)),
          words_((width_ + 63) / 64),
          stride_(words_ + 1),
          solid_(allocate(height_ + 2)),
          glow_(allocate(height_)) {}

    explicit operator bool() const { return solid_ != nullptr && glow_ != nullptr; }

    /// Row by row, before the first ring.
    void markSolid(std::size_t y, const std::uint8_t* pixels) {
        kernels.markSolid(pixels, solidRow(y), static_cast<std::int64_t>(width_));
        repeatLastColumn(solidRow(y));
    }

    /// Adds a ring and calls onRow(y, marks) for each row that it touches. False when it has no pixel, as all
    /// later ones then have none.
    template <class OnRow>
    bool addRing(OnRow&& onRow) {
        ++ring_;
        bool any = false;
        const auto settle = [&](std::size_t y, const MarkWord* marks) {
            if (!kernels.addMarks(marks, solidRow(y), glowRow(y), words_)) return;
            repeatLastColumn(solidRow(y));
            lastRing(y) = ring_;
            any = true;
            onRow(y, marks);
        };
        // A row's marks are added when the row behind it has been looked at, which must not see them yet.
        const MarkWord* pending = nullptr;
        for (std::size_t y = 0; y < height_; ++y) {
            MarkWord* marks = nullptr;
            if (mayChange(y)) {
                marks = solidRow(height_ + y % 2);
                growRow(y, marks);
            }
            if (pending != nullptr) settle(y - 1, pending);
            pending = marks;
        }
        if (pending != nullptr) settle(height_ - 1, pending);
        return any;
    }

private:
    using Words = std::unique_ptr<MarkWord[]>;

    /// Rows of words, with a word behind each row that holds the repeated last column or the number of the
    /// last ring.
    Words allocate(std::size_t rows) const {
        if (rows > std::numeric_limits<std::ptrdiff_t>::max() / sizeof(MarkWord) / stride_) return nullptr;
        return Words(new (std::nothrow) MarkWord[rows * stride_]());
    }

    MarkWord* solidRow(std::size_t y) { return solid_.get() + y * stride_; }
    MarkWord* glowRow(std::size_t y) { return glow_.get() + y * stride_; }
    MarkWord& lastRing(std::size_t y) { return glowRow(y)[words_]; }

    /// The pixel to the right of a row is its last.
    void repeatLastColumn(MarkWord* row) const {
        const MarkWord last = row[(width_ - 1) / 64] >> (width_ - 1) % 64 & 1;
        row[width_ / 64] |= last << width_ % 64;
    }

    /// Only what lies beside the marks of the ring before can be new.
    bool mayChange(std::size_t y) {
        const std::size_t last = std::min(y + 1, height_ - 1);
        for (std::size_t i = y == 0 ? 0 : y - 1; i <= last; ++i) {
            if (lastRing(i) + 1 == ring_) return true;
        }
        return false;
    }

    void growRow(std::size_t y, MarkWord* marks) {
        const MarkRows rows{solidRow(y == 0 ? 0 : y - 1), solidRow(y),
                            solidRow(std::min(y + 1, height_ - 1))};
        kernels.growRow(rows, glowRow(y), marks, words_);

        // The first three pixels of a row are seen as those to their right, from the row itself and from the
        // row behind it: old projects depend on it. Narrower frames repeat their first column instead.
        const auto seen = [this](MarkWord word) {
            return width_ < 3 ? word : (word & ~MarkWord{7}) | (word >> 1 & 7);
        };
        const MarkWord row = seen(rows.row[0]);
        const MarkWord above = y == 0 ? rows.above[0] : seen(rows.above[0]);
        marks[0] = ringMarks(above, rows.below[0], row << 1 | (rows.row[0] & 1), row,
                             row >> 1 | rows.row[1] << 63, glowRow(y)[0]);
        if (width_ % 64 != 0) marks[words_ - 1] &= (MarkWord{1} << width_ % 64) - 1;
    }

    std::size_t width_;
    std::size_t height_;
    std::size_t words_;
    std::size_t stride_;
    Words solid_;  ///< Two more rows hold the marks of a ring until they are added.
    Words glow_;
    MarkWord ring_ = 0;
};

class PixelLock {
public:
    explicit PixelLock(FrameBuffer* frame) : frame_(frame) {
        void* pixels = nullptr;
        vpixLockPixels(frame_, &pixels);
    }
    PixelLock(const PixelLock&) = delete;
    PixelLock& operator=(const PixelLock&) = delete;
    ~PixelLock() { vpixUnlockPixels(frame_); }

private:
    FrameBuffer* frame_;
};

/// False when the ring has no pixel.
bool drawRing(GlowMasks& masks, FrameBuffer* frame, std::int64_t width, const FixedColor& color,
              std::int64_t brightness) {
    const PixelLock lock(frame);
    const FrameView destination = frameThroughPixKit(frame);
    const FrameExtent extent(destination);
    const std::uint32_t pixel = color.pixel();
    const auto opacity = static_cast<int>(brightness / 65536);
    return masks.addRing([&](std::size_t y, const MarkWord* marks) {
        const std::int64_t offset = static_cast<std::int64_t>(y) * destination.rowBytes;
        const std::int64_t writable = extent.fitting(offset, width, bytesPerPixel);
        if (opacity == 0 || writable == 0) return;
        kernels.blendRow(marks, destination.pixels + offset, writable, pixel, opacity);
    });
}

std::int32_t render(const FilterInvocation& invocation, const Settings& settings) {
    FrameBuffer* const sourceFrame = invocation.sourceFrame;
    FrameBuffer* const destinationFrame = invocation.destFrame;
    const FrameView source = frameThroughPixKit(sourceFrame);
    vpixCopy(sourceFrame, destinationFrame, &source.bounds, &source.bounds, VPixCopyReplace);
    const auto glow = static_cast<std::int16_t>(settings.glow);
    const auto opacity = static_cast<std::int16_t>(settings.brightness);
    if (glow == 0 || opacity == 0 || source.width() <= 0 || source.height() <= 0) return 0;

    GlowMasks masks(source.width(), source.height());
    if (!masks) return 0;
    for (std::int64_t y = 0; y < source.height(); ++y) {
        masks.markSolid(static_cast<std::size_t>(y), source.pixels + y * source.rowBytes);
    }

    const bool fadeOut = settings.fadeOut != 0;
    const bool useEndColor = settings.useEndColor != 0;
    const int passes = glow >= 2 ? 2 : 1;
    const int steps = glow >= 2 ? glow / 2 : 1;
    const std::int64_t fullBrightness = std::int64_t{opacity} * 65536;
    const std::int64_t fade = fadeOut ? fullBrightness / glow : 0;
    const FixedColor end(settings.endColor);

    FixedColor color(settings.startColor);
    std::int64_t brightness = fullBrightness;
    for (int pass = 0; pass < passes; ++pass) {
        const FixedColor goal = pass == 0 ? middleColor(color, end, fadeOut) : end;
        const FixedColor colorStep = useEndColor ? perStep(color - goal, steps) : FixedColor();
        for (int step = 0; step < steps; ++step) {
            const bool outermost = pass == 1 && step == steps - 1;
            if (outermost && !fadeOut) brightness = fullBrightness / 2;
            if (!drawRing(masks, destinationFrame, source.width(), color, brightness)) return 0;
            brightness -= fade;
            color = color - colorStep;
        }
    }
    return 0;
}

constexpr FilterDeclaration<Settings> filter{
    .id = 10001,
    .initialSettings = {25, 255, 0x00C0C0C0, 0x00C0C0C0, 0, 1},
    .workRecord = {.bytes = 64},
    .render = render,
};

}  // namespace

void Register(VSK::PluginRegistry& registry) { registerFilter<filter>(registry); }

}  // namespace AlphaGlow
