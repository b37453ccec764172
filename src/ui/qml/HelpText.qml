import QtQuick
import QtQuick.Templates as T
import Halvo

// The tooltip of a control.
T.ToolTip {
    id: root
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutsideParent
    delay: 700
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    margins: 4
    padding: 6
    x: parent ? (parent.width - implicitWidth) / 2 : 0
    y: -implicitHeight - 4

    background: Rectangle {
        border.color: Theme.border
        color: Theme.menu
        radius: 4
    }
    contentItem: TextLabel {
        font.pixelSize: 11
        text: root.text
    }
}
