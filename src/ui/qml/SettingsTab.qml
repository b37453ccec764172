import QtQuick
import QtQuick.Templates as T
import Halvo

// The label of a tab.
T.TabButton {
    id: root

    property bool chosen: false
    readonly property color ink: chosen ? Theme.lineOf(Theme.accent) : Theme.secondary
    property string symbol

    Accessible.name: text
    checked: chosen
    focusPolicy: Qt.StrongFocus
    implicitHeight: 50
    implicitWidth: 68

    background: Rectangle {
        color: Theme.pill
        radius: 6
        visible: root.chosen || root.hovered

        FocusRing {
            control: root
            gap: 0
            radius: 8
        }
    }
    contentItem: Item {
        Icon {
            anchors.horizontalCenter: parent.horizontalCenter
            color: root.ink
            name: root.symbol
            size: 20
            y: 7
        }
        TextLabel {
            color: root.ink
            font.pixelSize: 11
            horizontalAlignment: Text.AlignHCenter
            text: root.text
            width: parent.width
            y: 30
        }
    }

    Accessible.onPressAction: root.clicked()
    Keys.onLeftPressed: nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)
    Keys.onRightPressed: nextItemInFocusChain(true).forceActiveFocus(Qt.TabFocusReason)
}
