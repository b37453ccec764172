import QtQuick
import Halvo

Rectangle {
    color: Theme.divider
    height: 1
    width: Theme.panelWidth - 2
    x: 1 // within the border
}
