// SPDX-License-Identifier: MIT
// The begin of a group.
import QtQuick 2.12
import QtQuick.Controls 2.12

Label {
    property var control
    property var panel

    function show(position, simple) {
    }

    function updateSimpleKeyframes() {
    }

    text: control ? control.label : ''
    font.bold: true
    topPadding: 6
}
