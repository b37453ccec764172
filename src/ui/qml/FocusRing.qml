import QtQuick
import QtQuick.Templates as T
import Halvo

// Marks the control with the keyboard focus.
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
