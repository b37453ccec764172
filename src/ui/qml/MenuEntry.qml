import QtQuick
import QtQuick.Templates as T
import Halvo

// A line of a menu.
T.AbstractButton {
    id: root

    property bool current: false

    Accessible.role: Accessible.MenuItem
    implicitHeight: 24
    implicitWidth: label.implicitWidth + label.leftMargin + 14

    background: Rectangle {
        color: Theme.accent
        radius: 4
        visible: root.current
    }
    contentItem: Item {
        Icon {
            anchors.verticalCenter: parent.verticalCenter
            color: label.color
            name: "check"
            size: 11
            visible: root.checkable && root.checked
            x: 6
        }
        TextLabel {
            id: label

            readonly property int leftMargin: root.checkable ? 22 : 10

            anchors.fill: parent
            anchors.leftMargin: leftMargin
            anchors.rightMargin: 6
            color: root.current ? Theme.textOn(Theme.accent) : Theme.primary
            text: root.text
        }
    }
}
