import QtQuick
import QtQuick.Templates as T
import Halvo

// A colour to choose.
T.AbstractButton {
    id: root

    property bool chosen: false
    required property color fill
    property string help
    property string symbol: ""

    Accessible.checkable: true
    Accessible.checked: chosen
    Accessible.name: help
    Accessible.role: Accessible.RadioButton
    focusPolicy: Qt.StrongFocus
    implicitHeight: 22
    implicitWidth: 22

    background: Rectangle {
        border.color: Theme.dark ? Qt.lighter(root.fill, 1.2) : Qt.darker(root.fill, 1.15)
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

    HelpText {
        text: root.help
        visible: root.hovered && root.help.length > 0
    }
}
