import QtQuick
import QtQuick.Templates as T
import Halvo

// A button that is one symbol.
T.AbstractButton {
    id: root

    property string help: ""
    property real iconSize: 14
    property string symbol
    property color tint: Theme.secondary

    Accessible.description: text.length > 0 ? help : ""
    Accessible.name: text.length > 0 ? text : help
    focusPolicy: Qt.StrongFocus
    implicitHeight: 22
    implicitWidth: 22
    opacity: enabled ? 1 : 0.4

    background: Rectangle {
        color: root.down ? Theme.hovered : Theme.pill
        radius: 6
        visible: root.hovered || root.down

        FocusRing {
            control: root
            gap: 0
            radius: 8
        }
    }
    contentItem: Item {
        Icon {
            anchors.centerIn: parent
            color: root.tint
            name: root.symbol
            size: root.iconSize
        }
    }

    Accessible.onPressAction: root.clicked()

    HelpText {
        text: root.help
        visible: root.hovered && root.help.length > 0
    }
}
