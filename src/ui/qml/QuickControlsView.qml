import QtQuick
import Halvo

// Preamp and output volume.
Item {
    id: root

    property color accent: Theme.accent
    required property Equalizer equalizer

    implicitHeight: 68
    implicitWidth: Theme.panelWidth

    TextLabel {
        id: caption
        color: Theme.secondary
        height: 20
        text: qsTr("Preamp")
        x: Theme.margin
        y: 12
    }
    SmallSlider {
        accent: root.accent
        anchors.left: caption.right
        anchors.leftMargin: 12
        anchors.right: parent.right
        anchors.rightMargin: 60
        anchors.verticalCenter: caption.verticalCenter
        from: -20
        name: caption.text
        origin: 0
        stepSize: 0.5
        to: 20
        value: root.equalizer.preamp

        onMoved: root.equalizer.preamp = value
        onReset: root.equalizer.preamp = 0
    }
    TextLabel {
        anchors.right: parent.right
        anchors.rightMargin: Theme.margin
        anchors.verticalCenter: caption.verticalCenter
        font.pixelSize: 11
        horizontalAlignment: Text.AlignRight
        text: root.equalizer.preampText
    }
    Item {
        id: speaker
        height: 20
        width: 16
        x: Theme.margin
        y: 37

        Icon {
            anchors.verticalCenter: parent.verticalCenter
            color: Theme.secondary
            name: root.equalizer.muted ? "speaker-slash-fill" : "speaker-high-fill"
            size: 15
        }
    }
    SmallSlider {
        accent: root.accent
        anchors.left: speaker.right
        anchors.leftMargin: 12
        anchors.right: percentage.left
        anchors.rightMargin: 12
        anchors.verticalCenter: speaker.verticalCenter
        name: qsTr("Volume")
        stepSize: 0.01
        value: root.equalizer.volume
        wheelEnabled: true

        onMoved: root.equalizer.volume = value
        onReset: root.equalizer.volume = 0
    }
    TextLabel {
        id: percentage
        anchors.right: parent.right
        anchors.rightMargin: Theme.margin
        anchors.verticalCenter: speaker.verticalCenter
        font.pixelSize: 10
        horizontalAlignment: Text.AlignRight
        text: root.equalizer.volumeText
        width: 32
    }
}
