import QtQuick
import QtQuick.Templates as T
import Halvo

// Shows the chosen output; a click or a key opens the list of all.
T.ComboBox {
    id: root

    property color accent: Theme.accent
    required property Devices devices

    function openList() {
        if (root.devices.count > 0)
            list.openAtItem(root, 0, root.height + 2, root.devices.selectedIndex);
    }
    function step(by: int) {
        const next = root.devices.selectedIndex + by;
        if (next >= 0 && next < root.devices.count)
            root.devices.select(next);
    }

    Accessible.description: displayText
    Accessible.name: qsTr("Output")
    displayText: devices.count > 0 ? devices.selectedName : qsTr("No output device")
    focusPolicy: Qt.StrongFocus
    implicitHeight: 26

    background: Rectangle {
        border.color: Theme.fieldBorder
        color: mouse.pressed ? Theme.hovered : Theme.field
        radius: 6

        FocusRing {
            control: root
            gap: 0
            radius: 8
        }
    }
    contentItem: Item {
        TextLabel {
            anchors.fill: parent
            anchors.leftMargin: 8
            anchors.rightMargin: 28
            color: root.devices.count > 0 ? Theme.primary : Theme.faint
            text: root.displayText
        }
        Rectangle {
            anchors.right: parent.right
            anchors.rightMargin: 5
            anchors.verticalCenter: parent.verticalCenter
            border.color: root.devices.count > 0 ? Theme.edgeOf(root.accent) : Theme.track
            color: root.devices.count > 0 ? root.accent : Theme.track
            height: 16
            radius: 4
            width: 16

            Icon {
                anchors.centerIn: parent
                color: Theme.textOn(parent.color)
                name: "caret-up-down"
                size: 12
            }
        }
    }

    Accessible.onPressAction: root.openList()
    Keys.onPressed: event => {
        if (list.visible) {
            list.handleKey(event);
        } else if (event.key === Qt.Key_Down || event.key === Qt.Key_Up) {
            root.step(event.key === Qt.Key_Down ? 1 : -1);
            event.accepted = true;
        } else if (event.key === Qt.Key_Space) {
            root.openList();
            event.accepted = true;
        }
    }

    MouseArea {
        id: mouse
        anchors.fill: parent

        onClicked: root.openList()
        onPressed: root.forceActiveFocus(Qt.MouseFocusReason)
    }
    MenuWindow {
        id: list
        checkedIndex: root.devices.selectedIndex
        hasChecks: true
        minimumContentWidth: root.width
        owner: root
        texts: root.devices.names

        onTriggered: index => root.devices.select(index)
    }
}
