// SPDX-License-Identifier: MIT
#include "engine/chain/fields.h"

#include <cstring>

namespace vireo {
namespace {

void copyRow(const Picture& source, int sourceRow, Picture& target, int targetRow) {
    std::memcpy(target.row(targetRow), source.row(sourceRow),
                static_cast<std::size_t>(source.width()) *
                    static_cast<std::size_t>(PixKit::bytesPerPixel(source.format())));
}

}  // namespace

PicturePtr extractField(const Picture& frame, Field field) {
    const int first = field == Field::Lower ? 1 : 0;
    const auto rows =
        std::make_shared<Picture>(frame.width(), upperFieldRows(frame.height() - first), frame.format());
    for (int y = 0; y < rows->height(); ++y) copyRow(frame, 2 * y + first, *rows, y);
    return rows;
}

void copyPicture(const Picture& source, Picture& target) {
    for (int y = 0; y < target.height(); ++y) copyRow(source, y, target, y);
}

PicturePtr weaveFields(const Picture& upper, const Picture& lower, const std::shared_ptr<Picture>& target) {
    const auto frame =
        target != nullptr
            ? target
            : std::make_shared<Picture>(upper.width(), upper.height() + lower.height(), upper.format());
    for (int y = 0; y < frame->height(); ++y) copyRow(y % 2 == 0 ? upper : lower, y / 2, *frame, y);
    return frame;
}

}  // namespace vireo
