import QtQuick
import QtQuick.Templates as T
import Halvo

// A line of a menu; a click closes the menu first.
T.AbstractButton {
    id: root

    readonly property bool current: menu.current === root.place
    required property MenuWindow menu
    property int place: root.Positioner.index

    signal triggered

    Accessible.role: Accessible.MenuItem
    implicitHeight: 24
    implicitWidth: label.implicitWidth + label.leftMargin + 14
    width: Math.max(implicitWidth, menu.width - 10)

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

    onClicked: {
        root.menu.close();
        root.triggered();
    }
    onHoveredChanged: {
        if (hovered)
            root.menu.current = root.place;
    }
}
