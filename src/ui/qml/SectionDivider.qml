import QtQuick
import Halvo

Rectangle {
    color: Theme.divider
    height: 1
    width: Theme.panelWidth
}
