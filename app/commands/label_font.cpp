// SPDX-License-Identifier: MIT
#include "app/commands/label_font.h"

#include <algorithm>
#include <cstring>

namespace vireo {
namespace {

constexpr int glyphWidth = 5, glyphHeight = 9, advance = glyphWidth + 1;

/// Nine rows from the top, one character each: the digit or letter ("0" to "V") of five bits, leftmost first.
struct Glyph {
    char character;
    char rows[glyphHeight + 1];
};

constexpr Glyph glyphs[] = {
    {' ', "000000000"}, {'&', "CIK8LID00"}, {'(', "48GGG8400"}, {')', "842224800"}, {'-', "000V00000"},
    {'.', "00000CC00"}, {'0', "EHJLPHE00"}, {'1', "4C4444E00"}, {'2', "EH1248V00"}, {'3', "V2421HE00"},
    {'4', "26AIV2200"}, {'5', "VGU11HE00"}, {'6', "68GUHHE00"}, {'7', "V12488800"}, {'8', "EHHEHHE00"},
    {'9', "EHHF12C00"}, {'A', "EHHVHHH00"}, {'B', "UHHUHHU00"}, {'C', "EHGGGHE00"}, {'D', "UHHHHHU00"},
    {'E', "VGGUGGV00"}, {'F', "VGGUGGG00"}, {'G', "EHGNHHE00"}, {'H', "HHHVHHH00"}, {'I', "E44444E00"},
    {'J', "72222IC00"}, {'K', "HIKOKIH00"}, {'L', "GGGGGGV00"}, {'M', "HRLLHHH00"}, {'N', "HHPLJHH00"},
    {'O', "EHHHHHE00"}, {'P', "UHHUGGG00"}, {'Q', "EHHHLID00"}, {'R', "UHHUKIH00"}, {'S', "FGGE11U00"},
    {'T', "V44444400"}, {'U', "HHHHHHE00"}, {'V', "HHHHHA400"}, {'W', "HHHLLRH00"}, {'X', "HHA4AHH00"},
    {'Y', "HHA444400"}, {'Z', "V1248GV00"}, {'a', "00E1FHF00"}, {'b', "GGUHHHU00"}, {'c', "00EGGGE00"},
    {'d', "11FHHHF00"}, {'e', "00EHVGE00"}, {'f', "698U88800"}, {'g', "00FHHHF1E"}, {'h', "GGUHHHH00"},
    {'i', "G0C444E00"}, {'j', "2062222IC"}, {'k', "GGIKOKI00"}, {'l', "C44444E00"}, {'m', "00QLLLL00"},
    {'n', "00UHHHH00"}, {'o', "00EHHHE00"}, {'p', "00UHHHUGG"}, {'q', "00FHHHF11"}, {'r', "00MPGGG00"},
    {'s', "00FGE1U00"}, {'t', "88U889600"}, {'u', "00HHHHF00"}, {'v', "00HHHA400"}, {'w', "00HHLLA00"},
    {'x', "00HA4AH00"}, {'y', "00HHHHF1E"}, {'z', "00V248V00"},
};

int rowBits(char row) { return row <= '9' ? row - '0' : row - 'A' + 10; }

void fillSquare(Picture& picture, int left, int top, int size, const std::uint8_t (&color)[4]) {
    for (int y = std::max(top, 0); y < std::min(top + size, picture.height()); ++y) {
        for (int x = std::max(left, 0); x < std::min(left + size, picture.width()); ++x) {
            std::memcpy(picture.row(y) + 4 * x, color, 4);
        }
    }
}

}  // namespace

int labelWidth(std::string_view text, int scale) {
    return scale * (advance * static_cast<int>(text.size()) - 1);
}

int labelHeight(int scale) { return scale * glyphHeight; }

void drawLabel(Picture& picture, int left, int top, int scale, std::string_view text,
               const std::uint8_t (&color)[4]) {
    for (const char character : text) {
        const auto glyph = std::find_if(std::begin(glyphs), std::end(glyphs),
                                        [character](const Glyph& g) { return g.character == character; });
        for (int y = 0; glyph != std::end(glyphs) && y < glyphHeight; ++y) {
            for (int x = 0; x < glyphWidth; ++x) {
                const bool isSet = (rowBits(glyph->rows[y]) >> (glyphWidth - 1 - x) & 1) != 0;
                if (isSet) fillSquare(picture, left + scale * x, top + scale * y, scale, color);
            }
        }
        left += scale * advance;
    }
}

}  // namespace vireo
