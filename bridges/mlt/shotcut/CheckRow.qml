// SPDX-License-Identifier: MIT
import QtQuick 2.12
import QtQuick.Controls 2.12
import QtQuick.Layouts 1.12
import Shotcut.Controls 1.0 as Shotcut

LabelledRow {
    id: row

    function show(position, simple) {
        box.checked = filter.get(control.property) === '1';
    }

    label: ''

    CheckBox {
        id: box

        text: row.control.label
        onClicked: filter.set(row.control.property, checked)
    }

    Item {
        Layout.fillWidth: true
    }

    Shotcut.UndoButton {
        onClicked: {
            box.checked = row.control.initial;
            filter.set(row.control.property, row.control.initial);
        }
    }

    Item {
        implicitWidth: 20
    }
}
