// SPDX-License-Identifier: MIT
#include "bench/bench.h"

#include <libyuv.h>

#include <array>

namespace bench {

void addLibyuv() {
    add("Black & White", "libyuv ARGBGrayTo", [](Frames& f) {
        return [&f] {
            libyuv::ARGBGrayTo(f.source, f.size.width * 4, f.destination, f.size.width * 4, f.size.width,
                               f.size.height);
        };
    });
    add("Horizontal Flip", "libyuv ARGBMirror", [](Frames& f) {
        return [&f] {
            libyuv::ARGBMirror(f.source, f.size.width * 4, f.destination, f.size.width * 4, f.size.width,
                               f.size.height);
        };
    });
    add("Levels, gamma 1.5", "libyuv RGBColorTable, in place", [](Frames& f) {
        std::array<std::uint8_t, 1024> table{};
        for (std::size_t i = 0; i < table.size(); ++i) table[i] = static_cast<std::uint8_t>(255 - i / 4);
        return [&f, table] {
            libyuv::RGBColorTable(f.destination, f.size.width * 4, table.data(), 0, 0, f.size.width,
                                  f.size.height);
        };
    });
    add("Ghosting", "libyuv ARGBInterpolate, one blend", [](Frames& f) {
        return [&f] {
            libyuv::ARGBInterpolate(f.source, f.size.width * 4, f.destination, f.size.width * 4,
                                    f.destination, f.size.width * 4, f.size.width, f.size.height, 187);
        };
    });
}

}  // namespace bench
