import QtQuick
import QtQuick.Templates as T
import Halvo

// The settings page of the panel.
Item {
    id: root

    property color accent: Theme.accent
    required property Settings settings
    property bool showColorCreator: false
    property real unfolded: 0 // of the colour editor

    signal quitRequested

    implicitHeight: column.implicitHeight + 10
    implicitWidth: Theme.panelWidth

    states: State {
        name: "creating"
        when: root.showColorCreator

        PropertyChanges {
            root.unfolded: 1
        }
    }
    transitions: Transition {
        from: "creating"

        NumberAnimation {
            duration: Theme.animation
            easing.type: Easing.OutCubic
            property: "unfolded"
        }
    }

    Column {
        id: column
        width: parent.width
        y: 7

        SettingsSwitch {
            accent: root.accent
            checked: root.settings.showNowPlaying
            symbol: "playlist"
            text: qsTr("Show Now Playing")

            onToggled: checked => root.settings.showNowPlaying = checked
        }
        SettingsSwitch {
            accent: root.accent
            checked: root.settings.showMenubarWaveform
            symbol: "waveform"
            text: qsTr("Menubar Waveform")

            onToggled: checked => root.settings.showMenubarWaveform = checked
        }
        TextLabel {
            color: Theme.secondary
            font.pixelSize: 11
            height: 26
            text: qsTr("Accent Color")
            x: Theme.margin + 2
        }
        AccentColors {
            editorOpen: root.showColorCreator
            settings: root.settings

            onAddRequested: root.showColorCreator = !root.showColorCreator
        }
        ColorEditor {
            clip: true
            height: Math.round(root.unfolded * implicitHeight)
            visible: height > 0

            onConfirmed: typed => {
                if (!root.settings.addColor(typed))
                    return;
                newColorHex = "";
                root.showColorCreator = false;
            }
        }
        Item {
            height: 10
            width: 1
        }
        SectionDivider {
        }
        Item {
            height: 4
            width: 1
        }
        T.AbstractButton {
            id: quit
            Accessible.name: text
            focusPolicy: Qt.StrongFocus
            implicitHeight: 28
            text: qsTr("Quit Halvo")
            width: Theme.panelWidth - 2 * x
            x: Theme.margin - 4

            background: Rectangle {
                color: quit.down ? Theme.hovered : Theme.pill
                radius: 6
                visible: quit.hovered || quit.down

                FocusRing {
                    control: quit
                    gap: 0
                    radius: 8
                }
            }
            contentItem: Item {
                Icon {
                    anchors.verticalCenter: parent.verticalCenter
                    color: Theme.secondary
                    name: "power"
                    size: 16
                    x: 5
                }
                TextLabel {
                    anchors.verticalCenter: parent.verticalCenter
                    text: quit.text
                    x: 31
                }
            }

            Accessible.onPressAction: quit.clicked()
            onClicked: root.quitRequested()
        }
    }
}
