// SPDX-License-Identifier: MIT
// The rules of Levels' settings dialog, without its window.
#ifndef VIREO_FILTERS_COLOR_LEVELS_DIALOG_MODEL_H
#define VIREO_FILTERS_COLOR_LEVELS_DIALOG_MODEL_H

#include "filters/color/levels.h"
#include "framework/dialog_geometry.h"

#include <array>
#include <cstdint>
#include <optional>

namespace Levels {

/// The five values of a channel, as bits of a mask that says what has changed.
enum Value : unsigned {
    InputBlack = 1,
    InputWhite = 2,
    OutputBlack = 4,
    OutputWhite = 8,
    Gamma = 16,
    AllValues = 31
};

/// In the order in which markers are hit.
inline constexpr Value values[] = {InputBlack, InputWhite, OutputBlack, OutputWhite, Gamma};

inline constexpr unsigned inputValues = InputBlack | InputWhite | Gamma;

/// What typing a field's value comes to.
struct Commit {
    bool refused = false;  ///< Beep and show the stored value again.
    unsigned changed = 0;
};

class DialogModel {
public:
    static constexpr int channelCount = 4;

    explicit DialogModel(const Settings& settings) : settings_(settings) {}

    const Settings& settings() const { return settings_; }
    int channel() const { return channel_; }
    const Box& preview() const { return preview_; }
    /// The strip that a value's marker hangs on.
    const MarkerStrip& strip(Value value) const { return (value & inputValues) != 0 ? input_ : output_; }

    /// Where the histogram, the line below it, the gradient, the combo box, the group and the client area
    /// lie.
    void layOut(const Box& histogram, const Box& line, const Box& gradient, const Box& combo,
                const Box& group, const Box& client);

    void countPixels(const FrameView& frame);

    /// One of 256 bars of the current channel in the histogram's own box, from its bottom.
    Box histogramBar(const Box& histogram, int i) const;

    /// What a field shows of a value of the current channel: whole numbers, gamma in hundredths.
    int shown(Value value) const;
    /// Where a value's marker points, 0 to 255.
    int markerValue(Value value) const;

    /// The values whose display changes. A changed input point moves the gamma marker too.
    void press(int x, int y);
    unsigned drag(int x);
    Commit commit(Value value, std::optional<int> typed);
    /// True when it is another channel.
    bool chooseChannel(int channel);
    void load(const Settings& settings);

private:
    Channel& current();
    std::int16_t& field(Value value);
    unsigned change(Value value, int to);

    Settings settings_;
    int channel_ = 0;
    MarkerStrip input_;
    MarkerStrip output_;
    Box preview_;
    std::array<std::array<std::uint32_t, channelCount>, 256> histogram_{};
    std::array<std::uint32_t, channelCount> largest_{};
    std::optional<Value> dragged_;
    int grabOffset_ = 0;
    int lastX_ = 0;
};

}  // namespace Levels

#endif
