import QtQuick
import QtQuick.Templates as T
import Halvo

// A line of a menu.
T.AbstractButton {
    id: root

    property bool current: false
    readonly property color ink: current ? Theme.textOn(Theme.accent) : Theme.primary

    Accessible.role: Accessible.MenuItem
    implicitHeight: 24
    implicitWidth: implicitContentWidth

    background: Rectangle {
        color: root.current ? Theme.accent : "transparent"
        radius: 4

        Icon {
            anchors.verticalCenter: parent.verticalCenter
            color: root.ink
            name: "check"
            size: 11
            visible: root.checkable && root.checked
            x: 6
        }
    }
    contentItem: TextLabel {
        color: root.ink
        leftPadding: root.checkable ? 22 : 10
        rightPadding: 14
        text: root.text
    }
}
