// SPDX-License-Identifier: MIT
// Letters for the contact sheet, so that it needs no fonts on the machine.
#ifndef VIREO_APP_COMMANDS_LABEL_FONT_H
#define VIREO_APP_COMMANDS_LABEL_FONT_H

#include "engine/chain/picture.h"

#include <cstdint>
#include <string_view>

namespace vireo {

/// The size of a line of text in pixels; a letter is 5 × 9 times the scale.
int labelWidth(std::string_view text, int scale);
int labelHeight(int scale);

/// Draws Latin letters, digits, "&", "(", ")", "-" and "."; any other character leaves a gap. `color` is in
/// "bgra" order, as the picture must be. Clipped to the picture.
void drawLabel(Picture& picture, int left, int top, int scale, std::string_view text,
               const std::uint8_t (&color)[4]);

}  // namespace vireo

#endif
