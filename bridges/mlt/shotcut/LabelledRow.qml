// SPDX-License-Identifier: MIT
// A label, as wide as the panel's widest, and what stands beside it.
import QtQuick 2.12
import QtQuick.Controls 2.12
import QtQuick.Layouts 1.12
import Shotcut.Controls 1.0 as Shotcut

RowLayout {
    property var control: null
    property var panel
    property string label: control ? control.label : ''

    function show(position, simple) {
    }

    function updateSimpleKeyframes() {
    }

    Label {
        text: label
        horizontalAlignment: Text.AlignRight
        Layout.preferredWidth: panel ? panel.labelWidth : implicitWidth
        onImplicitWidthChanged: panel.labelWidth = Math.max(panel.labelWidth, implicitWidth)

        Shotcut.HoverTip {
            text: control && control.note ? control.note : ''
        }
    }
}
