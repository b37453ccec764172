import QtQuick
import Halvo

// The output picker and the equalizer's switch.
Item {
    id: root

    property color accent: Theme.accent
    required property Devices devices
    required property Equalizer equalizer

    implicitHeight: 48
    implicitWidth: Theme.panelWidth

    OutputPicker {
        accent: root.accent
        anchors.left: parent.left
        anchors.leftMargin: Theme.margin
        anchors.right: toggle.left
        anchors.rightMargin: Theme.margin
        anchors.verticalCenter: parent.verticalCenter
        devices: root.devices
    }
    TintedSwitch {
        id: toggle
        accent: root.accent
        anchors.right: parent.right
        anchors.rightMargin: Theme.margin
        anchors.verticalCenter: parent.verticalCenter
        checked: root.equalizer.enabled
        text: qsTr("Equalizer")

        onToggled: root.equalizer.enabled = checked
    }
}
