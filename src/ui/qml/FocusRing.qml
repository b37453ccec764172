import QtQuick
import Halvo

// Shows which control has the keyboard.
Rectangle {
    required property Item control
    property int gap: 2

    anchors.fill: parent
    anchors.margins: -gap - border.width
    border.color: Theme.accent
    border.width: 2
    color: "transparent"
    visible: control.visualFocus
}
