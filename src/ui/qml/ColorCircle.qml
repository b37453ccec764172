import QtQuick
import QtQuick.Templates as T
import Halvo

// A colour to choose.
T.RadioButton {
    id: root

    property bool chosen: false
    required property color fill
    property string help
    property string symbol: ""

    Accessible.name: help
    checked: chosen
    focusPolicy: Qt.StrongFocus
    implicitHeight: 22
    implicitWidth: 22

    background: Rectangle {
        border.color: Qt.tint(root.fill, Qt.alpha(Theme.primary, root.hovered ? 0.4 : 0.16))
        color: root.fill
        radius: 11

        FocusRing {
            control: root
            gap: 0
            radius: 13
        }
    }
    contentItem: Item {
        Icon {
            anchors.centerIn: parent
            color: root.symbol.length > 0 ? Theme.primary : Theme.textOn(root.fill)
            name: root.chosen ? "check" : root.symbol
            size: 13
            visible: name.length > 0
        }
    }

    Accessible.onPressAction: root.clicked()
    Accessible.onToggleAction: root.clicked()

    HelpText {
        text: root.help
        visible: root.hovered && root.help.length > 0
    }
}
