import QtQuick
import QtQuick.Templates as T
import Halvo

// Shows and hides the bands and the settings, and binds the preset to the output.
Item {
    id: root

    required property Presets presets
    property bool showAdvanced: false
    property bool showSettings: false

    signal advancedToggled
    signal settingsToggled

    implicitHeight: 38
    implicitWidth: Theme.panelWidth

    T.AbstractButton {
        id: fold
        Accessible.name: text
        anchors.verticalCenter: parent.verticalCenter
        focusPolicy: Qt.StrongFocus
        implicitHeight: 24
        implicitWidth: implicitContentWidth
        text: root.showAdvanced ? qsTr("Hide EQ") : qsTr("Show EQ")
        x: Theme.margin - 4

        background: Rectangle {
            color: fold.down ? Theme.hovered : Theme.pill
            radius: 6
            visible: fold.hovered || fold.down

            FocusRing {
                control: fold
                gap: 0
                radius: 8
            }
        }
        contentItem: Row {
            leftPadding: 6
            rightPadding: 6
            spacing: 6

            Icon {
                anchors.verticalCenter: parent.verticalCenter
                color: Theme.secondary
                name: root.showAdvanced ? "caret-up" : "caret-down"
                size: 11
            }
            TextLabel {
                anchors.verticalCenter: parent.verticalCenter
                color: Theme.secondary
                font.pixelSize: 11
                text: fold.text
            }
        }

        Accessible.onPressAction: fold.clicked()
        onClicked: root.advancedToggled()
    }
    SymbolButton {
        Accessible.checkable: true
        Accessible.checked: root.presets.bound
        anchors.right: gear.left
        anchors.rightMargin: 6
        anchors.verticalCenter: parent.verticalCenter
        help: root.presets.bound ? qsTr("Preset bound to this device") : qsTr("Bind preset to this output device")
        iconSize: 16
        symbol: root.presets.bound ? "link-circle-fill" : "link-circle"
        tint: root.presets.bound ? Theme.lineOf(Theme.accent) : Theme.secondary

        onClicked: root.presets.toggleBinding()
    }
    SymbolButton {
        id: gear
        anchors.right: parent.right
        anchors.rightMargin: Theme.margin - 2
        anchors.verticalCenter: parent.verticalCenter
        help: qsTr("Settings")
        iconSize: 16
        symbol: root.showSettings ? "gear-six-fill" : "gear-six"

        onClicked: root.settingsToggled()
    }
}
