import QtQuick
import QtQuick.Templates as T
import Halvo

// A line of a menu.
T.MenuItem {
    id: root

    property bool current: false
    property bool hasMark: false
    readonly property color ink: current ? Theme.textOn(Theme.accent) : Theme.primary

    // Not the template's `checked`, which a click changes.
    property bool marked: false

    Accessible.checkable: hasMark
    Accessible.checked: marked
    implicitHeight: 24
    implicitWidth: implicitContentWidth

    background: Rectangle {
        border.color: root.current ? Theme.edgeOf(Theme.accent) : "transparent"
        color: root.current ? Theme.accent : "transparent"
        radius: 4

        Icon {
            anchors.verticalCenter: parent.verticalCenter
            color: root.ink
            name: "check"
            size: 11
            visible: root.hasMark && root.marked
            x: 6
        }
    }
    contentItem: TextLabel {
        color: root.ink
        leftPadding: root.hasMark ? 22 : 10
        rightPadding: 14
        text: root.text
    }

    Accessible.onPressAction: root.clicked()
}
