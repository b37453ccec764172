import QtQuick
import Halvo

// Shows the genre that the automatic mode found; nothing to press.
PillBody {
    Accessible.description: qsTr("Chosen by the genre of what is playing")
    Accessible.name: name
    Accessible.role: Accessible.StaticText
    symbol: "MenuBarIcon"
    symbolSize: 7
}
