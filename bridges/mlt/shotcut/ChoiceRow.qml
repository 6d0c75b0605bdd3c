// SPDX-License-Identifier: MIT
import QtQuick 2.12
import QtQuick.Layouts 1.12
import Shotcut.Controls 1.0 as Shotcut

LabelledRow {
    id: row

    function choose(index) {
        box.currentIndex = index;
        filter.set(control.property, control.minimum + index);
    }

    function show(position, simple) {
        box.currentIndex = filter.getDouble(control.property, position) - control.minimum;
    }

    Shotcut.ComboBox {
        id: box

        model: row.control.words
        onActivated: row.choose(index)
    }

    Item {
        Layout.fillWidth: true
    }

    Shotcut.UndoButton {
        onClicked: row.choose(row.control.initial - row.control.minimum)
    }

    Item {
        implicitWidth: 20
    }
}
