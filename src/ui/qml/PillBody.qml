import QtQuick
import Halvo

// The look of a pill: an optional symbol and a name.
Rectangle {
    id: root

    property color accent: Theme.accent
    property bool hovered: false
    readonly property color ink: isActive ? Theme.textOn(accent) : Theme.primary
    property bool isActive: false
    property bool isLifted: false // being dragged
    property string name
    property string symbol: ""
    property int symbolSize: 9

    border.color: isActive ? Theme.edgeOf(accent) : Theme.border
    border.width: isActive || isLifted ? 1 : 0
    color: isActive ? accent : isLifted ? Theme.menu : Qt.alpha(Theme.secondary, hovered ? 0.22 : 0.12)
    implicitHeight: 28
    implicitWidth: row.implicitWidth + 24
    radius: 14

    Row {
        id: row
        anchors.centerIn: parent
        spacing: 5

        Icon {
            anchors.verticalCenter: parent.verticalCenter
            color: root.ink
            name: root.symbol
            size: root.symbolSize + 3
            visible: root.symbol.length > 0
        }
        TextLabel {
            anchors.verticalCenter: parent.verticalCenter
            color: root.ink
            font.weight: root.isActive ? Font.DemiBold : Font.Normal
            text: root.name
            width: Math.min(implicitWidth, 200)
        }
    }
}
