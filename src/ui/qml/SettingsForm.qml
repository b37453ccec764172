import QtQuick
import Halvo

// A tab's form with its one line of text.
Item {
    id: root

    property alias text: label.text

    anchors.fill: parent

    TextLabel {
        id: label
        Accessible.name: text
        Accessible.role: Accessible.StaticText
        anchors.left: parent.left
        anchors.margins: 20
        anchors.right: parent.right
        anchors.top: parent.top
        color: Theme.secondary
        font.pixelSize: 13
    }
}
