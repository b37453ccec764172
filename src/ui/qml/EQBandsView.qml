pragma ComponentBehavior: Bound
import QtQuick
import Halvo

// The ten bands over the live spectrum, with their scale.
Item {
    id: root

    property color accent: Theme.accent
    required property Bands bands
    property real maxGain: 20
    readonly property real trackHeight: 150

    Accessible.name: qsTr("Equalizer bands")
    Accessible.role: Accessible.Grouping
    implicitHeight: 196
    implicitWidth: Theme.panelWidth

    Repeater {
        model: ["+" + root.maxGain, "0 dB", "-" + root.maxGain]

        delegate: ScaleMark {
            required property int index
            required property string modelData

            text: modelData
            y: 14 + index * root.trackHeight / 2
        }
    }
    Row {
        x: 48
        y: 14

        Repeater {
            model: root.bands

            delegate: BandSlider {
                required property int index

                accent: root.accent
                maxGain: root.maxGain
                trackHeight: root.trackHeight
                width: 26

                onGainRequested: gain => root.bands.setGain(index, gain)
            }
        }
    }

    component ScaleMark: Item {
        id: mark

        property alias text: caption.text

        width: root.width

        TextLabel {
            id: caption
            anchors.verticalCenter: parent.top
            color: Theme.secondary
            font.pixelSize: 10
            horizontalAlignment: Text.AlignRight
            width: 42
        }
        Rectangle {
            color: Theme.divider
            height: 1
            width: root.width - x - Theme.margin
            x: 48
        }
    }
}
