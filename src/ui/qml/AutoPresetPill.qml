import QtQuick
import Halvo

// Shows the genre that automatic mode chose; not a button.
PillBody {
    Accessible.name: qsTr("%1, chosen by genre").arg(name)
    Accessible.role: Accessible.StaticText
    symbol: "MenuBarIcon"
    symbolSize: 7
}
