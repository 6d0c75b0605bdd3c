// SPDX-License-Identifier: MIT
import QtQuick 2.12
import Shotcut.Controls 1.0 as Shotcut

LabelledRow {
    id: row

    function show(position, simple) {
        slider.value = Math.round(filter.getDouble(control.property, position));
        slider.enabled = simple;
        button.checked = filter.animateIn <= 0 && filter.animateOut <= 0 && filter.keyframeCount(control.property) > 0;
    }

    function updateSimpleKeyframes() {
        panel.updateFilter(control.property, slider.value, button, null);
    }

    Shotcut.SliderSpinner {
        id: slider

        minimumValue: row.control.minimum
        maximumValue: row.control.maximum
        suffix: row.control.unit
        onValueChanged: row.panel.updateFilter(row.control.property, value, button, row.panel.getPosition())
    }

    Shotcut.UndoButton {
        onClicked: slider.value = row.control.initial
    }

    Shotcut.KeyframesButton {
        id: button

        onToggled: {
            slider.enabled = true;
            row.panel.toggleKeyframes(checked, row.control.property, slider.value);
        }
    }
}
