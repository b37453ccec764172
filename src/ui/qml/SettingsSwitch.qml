import QtQuick
import Halvo

// A setting with its symbol and its switch.
Item {
    id: root

    property color accent: Theme.accent
    property bool checked
    property string symbol
    property string text

    signal toggled(bool checked)

    implicitHeight: 30
    implicitWidth: Theme.panelWidth

    Icon {
        anchors.verticalCenter: parent.verticalCenter
        color: Theme.secondary
        name: root.symbol
        size: 16
        x: Theme.margin + 1
    }
    TextLabel {
        anchors.verticalCenter: parent.verticalCenter
        text: root.text
        x: Theme.margin + 27
    }
    TintedSwitch {
        accent: root.accent
        anchors.right: parent.right
        anchors.rightMargin: Theme.margin
        anchors.verticalCenter: parent.verticalCenter
        checked: root.checked
        text: root.text

        onToggled: root.toggled(checked)
    }
}
