// SPDX-License-Identifier: MIT
// The panel of a filter: a row for each of its parameters.
import QtQuick 2.12
import QtQuick.Controls 2.12
import QtQuick.Layouts 1.12
import Shotcut.Controls 1.0 as Shotcut

Shotcut.KeyframableFilter {
    id: panel

    // {kind, property, label, initial} and what the rows of a kind take beside; a heading has only a label.
    property var controls: []
    property real labelWidth: 0

    readonly property var settings: controls.filter(control => control.property !== undefined)
    readonly property var numbers: settings.filter(control => control.kind === 'Number')

    function eachRow(work) {
        for (let i = 0; i < rows.count; ++i)
            if (rows.itemAt(i).item)
                work(rows.itemAt(i).item);
    }

    function setControls() {
        const position = getPosition();
        const simple = isSimpleKeyframesActive();
        blockUpdate = true;
        eachRow(row => row.show(position, simple));
        blockUpdate = false;
    }

    function updateSimpleKeyframes() {
        setControls();
        eachRow(row => row.updateSimpleKeyframes());
    }

    keyframableParameters: numbers.map(control => control.property)
    startValues: numbers.map(control => control.initial)
    middleValues: numbers.map(control => control.initial)
    endValues: numbers.map(control => control.initial)

    width: 350
    height: column.implicitHeight + 2 * column.anchors.margins

    Component.onCompleted: {
        if (filter.isNew) {
            for (const control of settings)
                filter.set(control.property, control.initial);
            filter.savePreset(preset.parameters);
        }
        setControls();
    }

    ColumnLayout {
        id: column

        anchors.fill: parent
        anchors.margins: 8

        LabelledRow {
            label: qsTr('Preset')
            panel: panel

            Shotcut.Preset {
                id: preset

                parameters: panel.settings.map(control => control.property)
                onBeforePresetLoaded: panel.resetSimpleKeyframes()
                onPresetSelected: {
                    panel.setControls();
                    panel.initializeSimpleKeyframes();
                }
            }
        }

        Repeater {
            id: rows

            model: panel.controls

            Loader {
                Layout.fillWidth: true
                Component.onCompleted: setSource(modelData.kind + 'Row.qml', {'control': modelData, 'panel': panel})
            }
        }

        Item {
            Layout.fillHeight: true
        }
    }

    Connections {
        function onChanged() {
            panel.setControls();
        }

        function onInChanged() {
            panel.updateSimpleKeyframes();
        }

        function onOutChanged() {
            panel.updateSimpleKeyframes();
        }

        function onAnimateInChanged() {
            panel.updateSimpleKeyframes();
        }

        function onAnimateOutChanged() {
            panel.updateSimpleKeyframes();
        }

        function onPropertyChanged(name) {
            panel.setControls();
        }

        target: filter
    }

    Connections {
        function onPositionChanged() {
            panel.setControls();
        }

        target: producer
    }
}
