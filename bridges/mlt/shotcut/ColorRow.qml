// SPDX-License-Identifier: MIT
import QtQuick 2.12
import QtQuick.Layouts 1.12
import Shotcut.Controls 1.0 as Shotcut

LabelledRow {
    id: row

    // A colour with key frames, which no panel makes, shows its colour of the moment and keeps them.
    readonly property bool animated: filter.keyframeCount(control.property) > 0

    function show(position, simple) {
        picker.enabled = !animated;
        picker.value = filter.get(control.property, animated ? position : -1);
    }

    Shotcut.ColorPicker {
        id: picker

        onValueChanged: {
            if (!row.panel.blockUpdate)
                filter.set(row.control.property, String(value));
            filter.set('disable', 0);
        }
        onPickStarted: filter.set('disable', 1)
        onPickCancelled: filter.set('disable', 0)
    }

    Item {
        Layout.fillWidth: true
    }

    Shotcut.UndoButton {
        enabled: picker.enabled
        onClicked: picker.value = row.control.initial
    }

    Item {
        implicitWidth: 20
    }
}
