import QtQuick
import Halvo

// A line of plain text, elided at the end.
Text {
    color: Theme.primary
    elide: Text.ElideRight
    font.family: Theme.fontFamily
    font.pixelSize: Theme.fontSize
    horizontalAlignment: Text.AlignLeft
    maximumLineCount: 1
    textFormat: Text.PlainText
    verticalAlignment: Text.AlignVCenter
}
