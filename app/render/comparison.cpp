// SPDX-License-Identifier: MIT
#include "app/render/comparison.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

namespace vireo {
namespace {

/// Everything that is drawn lies at multiples of this, so that halved chroma and the fields of an interlaced
/// frame stay where they are.
constexpr int grid = 4;

constexpr double lineEdge = 0.1, lineMiddle = 0.95;
constexpr double lightSquare = 0.8, darkSquare = 0.6;

int onGrid(int size) { return (size + grid - 1) / grid * grid; }

/// The line between both pictures and the squares behind them grow with the frame.
int lineWidth(int width, int height) { return onGrid(std::max(1, std::min(width, height) / 300)); }
int squareSize(int width, int height) { return onGrid(std::max(grid, std::min(width, height) / 60)); }

/// Where the result stands, seen from the source's corner, and how large both are together.
struct Placement {
    int left = 0, top = 0;
    int width, height;
    int line;
};

Placement place(Layout layout, int width, int height) {
    const int line = lineWidth(width, height);
    switch (layout) {
        case Layout::Beside: return {width + line, 0, 2 * width + line, height, line};
        case Layout::Below: {
            // Rows keep their field.
            const int top = height + height % 2 + line;
            return {0, top, width, top + height, line};
        }
        case Layout::After:
        case Layout::Split: break;
    }
    return {0, 0, width, height, line};
}

template <class Channel>
constexpr Channel level(double share) {
    if constexpr (std::is_floating_point_v<Channel>) return static_cast<Channel>(share);
    return static_cast<Channel>(share * std::numeric_limits<Channel>::max() + 0.5);
}

template <class Channel>
void setGrey(Channel* pixel, double share) {
    std::fill_n(pixel, 3, level<Channel>(share));
    pixel[3] = level<Channel>(1);
}

/// Draws in pictures of one kind of channel.
template <class Channel>
class Painter {
public:
    explicit Painter(Picture& picture) : picture_(picture) {}

    /// Columns `from` to `to` of a picture, at the place of its corner.
    void copy(const Picture& picture, int left, int top, int from, int to) {
        for (int y = 0; y < picture.height(); ++y) {
            std::memcpy(at(left + from, top + y), reinterpret_cast<const Channel*>(picture.row(y)) + 4 * from,
                        4 * sizeof(Channel) * static_cast<std::size_t>(to - from));
        }
    }

    void fill(const FrameRect& area, double share) {
        for (int y = area.top; y < area.bottom; ++y)
            for (int x = area.left; x < area.right; ++x) setGrey(at(x, y), share);
    }

    /// Lays the pixels over squares, so that they are opaque.
    void layOverSquares(int size) {
        constexpr double one = static_cast<double>(level<Channel>(1));
        constexpr double half = std::is_floating_point_v<Channel> ? 0 : 0.5;
        for (int y = 0; y < picture_.height(); ++y) {
            for (int x = 0; x < picture_.width(); ++x) {
                Channel* pixel = at(x, y);
                if (pixel[3] == level<Channel>(1)) continue;
                const double behind = one * ((x / size + y / size) % 2 == 0 ? lightSquare : darkSquare);
                const double opacity = static_cast<double>(pixel[3]) / one;
                for (int i = 0; i < 3; ++i)
                    pixel[i] = static_cast<Channel>(behind + (pixel[i] - behind) * opacity + half);
                pixel[3] = level<Channel>(1);
            }
        }
    }

private:
    Channel* at(int x, int y) { return reinterpret_cast<Channel*>(picture_.row(y)) + 4 * x; }

    Picture& picture_;
};

/// Dark, light, dark: to be seen on any picture.
template <class Channel>
void drawLine(Painter<Channel>& painter, const FrameRect& area, bool isUpright) {
    FrameRect middle = area;
    std::int32_t& first = isUpright ? middle.left : middle.top;
    std::int32_t& last = isUpright ? middle.right : middle.bottom;
    const std::int32_t edge = (last - first) / 4;
    first += edge;
    last -= edge;
    painter.fill(area, lineEdge);
    painter.fill(middle, lineMiddle);
}

template <class Channel>
PicturePtr compose(const Picture& before, const Picture& after, Layout layout, bool keepAlpha) {
    const int width = after.width(), height = after.height();
    const Placement placement = place(layout, width, height);
    const auto both = std::make_shared<Picture>(placement.width, placement.height, after.format());
    Painter<Channel> painter(*both);
    const int middle = layout == Layout::Split ? width / 2 : 0;
    if (layout != Layout::After) painter.copy(before, 0, 0, 0, layout == Layout::Split ? middle : width);
    painter.copy(after, placement.left, placement.top, middle, width);
    if (!keepAlpha) painter.layOverSquares(squareSize(width, height));
    switch (layout) {
        case Layout::After: break;
        case Layout::Beside: drawLine(painter, {width, 0, placement.left, height}, true); break;
        case Layout::Below: drawLine(painter, {0, height, width, placement.top}, false); break;
        case Layout::Split: {
            const int left = std::max(0, middle - placement.line / 2);
            drawLine(painter, {left, 0, std::min(width, left + placement.line), height}, true);
        }
    }
    return both;
}

}  // namespace

Layout fittingLayout(const FrameShape& source) {
    return source.width >= 2 * source.height ? Layout::Below : Layout::Beside;
}

FrameShape Comparison::outputShape(const FrameShape& source) const {
    const Placement placement =
        place(options_.layout.value_or(fittingLayout(source)), source.width, source.height);
    return {placement.width, placement.height, source.alpha && options_.keepAlpha};
}

PicturePtr Comparison::process(PicturePtr source, const FramePosition& position,
                               const SourceHistory& history) {
    const PicturePtr after = processor_.process(source, position, history);
    const Layout layout = options_.layout.value_or(fittingLayout({source->width(), source->height()}));
    if (source->format() == formatBgraFloat)
        return compose<float>(*source, *after, layout, options_.keepAlpha);
    if (source->format() == formatBgra16)
        return compose<std::uint16_t>(*source, *after, layout, options_.keepAlpha);
    return compose<std::uint8_t>(*source, *after, layout, options_.keepAlpha);
}

}  // namespace vireo
