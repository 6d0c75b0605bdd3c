// SPDX-License-Identifier: MIT
// The rules of Bend's settings dialog, without its window.
#ifndef VIREO_FILTERS_WARP_BEND_DIALOG_MODEL_H
#define VIREO_FILTERS_WARP_BEND_DIALOG_MODEL_H

#include "filters/warp/bend.h"
#include "framework/dialog_geometry.h"

#include <string>
#include <string_view>
#include <vector>

namespace Bend {

struct SliderRange {
    int smallest;
    int largest;
};

class DialogModel {
public:
    static constexpr SliderRange intensityRange{0, 30};
    static constexpr SliderRange rateRange{2, 16};
    static constexpr SliderRange widthRange{3, 90};

    explicit DialogModel(const Settings& settings) : settings_(settings) {}

    const Settings& settings() const { return settings_; }

    /// The preview stands in the middle of its placeholder.
    static constexpr Box preview(const Box& placeholder) {
        return previewBetween(placeholder.left, placeholder.right, placeholder.top, placeholder.bottom, 160,
                              120);
    }

    /// The fill colour has no control and stays.
    void choose(const AxisSettings& horizontal, const AxisSettings& vertical) {
        settings_.horizontal = horizontal;
        settings_.vertical = vertical;
    }

    /// The animation's steps, one for each picture that is shown.
    std::int32_t nextStep() { return static_cast<std::int32_t>(step_++); }

private:
    Settings settings_;
    std::uint32_t step_ = 0;
};

/// The localisation keys of a list resource: zero-terminated, up to the first empty one. A carriage return
/// ends a key too, and so does the end of the bytes.
std::vector<std::string> listKeys(std::string_view bytes);

/// Takes every backslash and digit zero off the end of a list's text, as hosts' lists once ended.
std::u16string listItem(std::u16string text);

/// The height of a combo box that drops down far enough for its items, twelve at most.
constexpr int dropDownHeight(int items, int itemHeight, int fieldHeight) {
    constexpr int mostItems = 12;
    return (std::min(items, mostItems) + 1) * itemHeight + fieldHeight;
}

}  // namespace Bend

#endif
