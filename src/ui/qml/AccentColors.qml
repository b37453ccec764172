pragma ComponentBehavior: Bound
import QtQuick
import Halvo

// The system's accent, the palette and the custom colours, in as many rows as needed.
Flow {
    id: root

    property string draggingCustomID: ""
    property bool editorOpen: false
    required property Settings settings

    signal addRequested

    Accessible.name: qsTr("Accent Color")
    Accessible.role: Accessible.Grouping
    spacing: 7
    width: Theme.panelWidth - 2 * Theme.margin
    x: Theme.margin

    onPositioningComplete: {
        for (let index = 0; index < customs.count; ++index)
            customs.itemAt(index).placed = true;
    }

    ColorCircle {
        chosen: root.settings.accentHex === "native"
        fill: Theme.pill
        help: Qt.platform.os === "osx" ? qsTr("Native (macOS system accent)") : qsTr("Native (system accent)")
        symbol: "desktop"

        onClicked: root.settings.accentHex = "native"
    }
    Repeater {
        model: root.settings.palette

        delegate: ColorCircle {
            required property var modelData

            chosen: root.settings.accentHex === modelData.hex
            fill: modelData.hex
            help: modelData.name

            onClicked: root.settings.accentHex = modelData.hex
        }
    }
    Repeater {
        id: customs
        model: root.settings.customColors

        delegate: CustomColorCircle {
            id: circle
            colors: root.settings.customColors
            draggingCustomID: root.draggingCustomID
            menu: colorMenu
            settings: root.settings

            onDragBegan: root.draggingCustomID = colorID
            onDragEnded: root.draggingCustomID = ""
            onMenuRequested: (x, y, index) => {
                colorMenu.colorID = colorID;
                colorMenu.openAtItem(circle, x, y, index);
            }
        }
    }
    SymbolButton {
        help: qsTr("Add custom color")
        iconSize: 14
        implicitWidth: 22
        symbol: root.editorOpen ? "minus" : "plus"
        tint: Qt.alpha(Theme.primary, 0.4)

        onClicked: root.addRequested()
    }
    MenuWindow {
        id: colorMenu

        property string colorID: ""

        owner: root
        texts: [qsTr("Delete")]

        onTriggered: root.settings.customColors.remove(colorID)
    }
}
