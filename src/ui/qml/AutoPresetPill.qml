import QtQuick
import Halvo

// Shows the genre that the automatic mode found; nothing to press.
PillBody {
    Accessible.name: qsTr("%1, chosen by genre").arg(name)
    Accessible.role: Accessible.StaticText
    symbol: "MenuBarIcon"
    symbolSize: 7
}
