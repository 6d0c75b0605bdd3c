// SPDX-License-Identifier: MIT
// Colours for people: only where a stream is a terminal that shows them, and NO_COLOR is not set.
#ifndef VIREO_APP_BASE_TERMINAL_H
#define VIREO_APP_BASE_TERMINAL_H

#include <string>
#include <string_view>

namespace vireo {

enum class Style { Heading, Name, Faint, Good, Warning, Error };

/// Standard output or standard error, as far as it is a terminal.
class Terminal {
public:
    static const Terminal& output();
    static const Terminal& errors();

    /// Whether lines may be written over and coloured at all.
    bool isCapable() const { return capable_; }

    /// The text in that style; the text itself where the stream takes no colours.
    std::string styled(Style style, std::string_view text) const;

private:
    explicit Terminal(int file);

    bool capable_;
    bool colored_;
};

}  // namespace vireo

#endif
