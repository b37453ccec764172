import QtQuick
import QtQuick.Templates as T
import Halvo

// Shows which control has the keyboard.
Rectangle {
    required property T.Control control
    property int gap: 2

    anchors.fill: parent
    anchors.margins: -gap - border.width
    border.color: Theme.lineOf(Theme.accent)
    border.width: 2
    color: "transparent"
    visible: control.visualFocus
}
