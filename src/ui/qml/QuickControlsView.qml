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
        anchors.right: decibels.left
        anchors.rightMargin: 12
        anchors.verticalCenter: caption.verticalCenter
        from: -20
        name: caption.text
        origin: 0
        setting: root.equalizer.preamp
        stepSize: 0.5
        to: 20

        onRequested: value => root.equalizer.preamp = value
        onReset: root.equalizer.preamp = 0
    }
    TextLabel {
        id: decibels
        anchors.right: parent.right
        anchors.rightMargin: Theme.margin
        anchors.verticalCenter: caption.verticalCenter
        font.pixelSize: 10
        horizontalAlignment: Text.AlignRight
        text: root.equalizer.preampText
        width: 32
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
            size: 16
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
        setting: root.equalizer.volume
        stepSize: 0.01
        wheelEnabled: true

        onRequested: value => root.equalizer.volume = value
        onReset: root.equalizer.volume = 0
    }
    TextLabel {
        id: percentage
        anchors.right: parent.right
        anchors.rightMargin: Theme.margin
        anchors.verticalCenter: speaker.verticalCenter
        font.pixelSize: 10
        horizontalAlignment: Text.AlignRight
        objectName: "percentage"
        text: root.equalizer.volumeText
        width: 32
    }
}
