import QtQuick
import Halvo

// What is playing, the player's controls, and the switch for presets by genre.
Item {
    id: root

    property color accent: Theme.accent
    required property NowPlaying nowPlaying

    Accessible.name: qsTr("Now playing")
    Accessible.role: Accessible.Grouping
    implicitHeight: automatic.y + automatic.height + (notice.visible ? notice.height : 0) + 6
    implicitWidth: Theme.panelWidth

    Artwork {
        id: cover
        accent: root.accent
        height: 36
        image: root.nowPlaying.artwork
        width: 36
        x: Theme.margin
        y: 10

        Icon {
            anchors.centerIn: parent
            color: Theme.brightness(root.accent) > 0.75 ? "#5A5A60" : "#FFFFFF"
            name: "music-note-fill"
            size: 18
            visible: !root.nowPlaying.hasArtwork
        }
    }
    Column {
        anchors.left: cover.right
        anchors.leftMargin: 10
        anchors.right: transport.left
        anchors.rightMargin: 8
        anchors.verticalCenter: cover.verticalCenter
        spacing: 2

        ReadLabel {
            color: root.nowPlaying.hasTrack ? Theme.primary : Theme.secondary
            font.weight: Font.DemiBold
            text: root.nowPlaying.hasTrack ? root.nowPlaying.title : qsTr("Not playing")
            width: parent.width
        }
        ReadLabel {
            color: Theme.secondary
            font.pixelSize: 11
            text: root.nowPlaying.artist
            visible: text.length > 0
            width: parent.width
        }
    }
    Row {
        id: transport
        anchors.right: parent.right
        anchors.rightMargin: Theme.margin - 4
        anchors.verticalCenter: cover.verticalCenter
        enabled: root.nowPlaying.hasTrack
        spacing: 2

        SymbolButton {
            iconSize: 16
            symbol: "skip-back-fill"
            text: qsTr("Previous track")

            onClicked: root.nowPlaying.previousTrack()
        }
        SymbolButton {
            iconSize: 20
            implicitWidth: 28
            symbol: root.nowPlaying.playing ? "pause-fill" : "play-fill"
            text: root.nowPlaying.playing ? qsTr("Pause") : qsTr("Play")
            tint: Theme.primary

            onClicked: root.nowPlaying.togglePlayPause()
        }
        SymbolButton {
            iconSize: 16
            symbol: "skip-forward-fill"
            text: qsTr("Next track")

            onClicked: root.nowPlaying.nextTrack()
        }
    }
    Item {
        id: automatic
        height: 28
        width: parent.width
        y: 52

        Icon {
            anchors.verticalCenter: parent.verticalCenter
            color: root.nowPlaying.automatic ? Theme.lineOf(root.accent) : Theme.secondary
            name: "sparkle"
            size: 16
            x: Theme.margin + 1
        }
        TextLabel {
            id: caption
            anchors.verticalCenter: parent.verticalCenter
            color: Theme.secondary
            font.pixelSize: 11
            text: qsTr("Preset by genre")
            x: Theme.margin + 27
        }
        ReadLabel {
            anchors.left: caption.right
            anchors.leftMargin: 8
            anchors.right: busy.left
            anchors.rightMargin: 6
            anchors.verticalCenter: parent.verticalCenter
            font.pixelSize: 11
            font.weight: Font.Medium
            horizontalAlignment: Text.AlignRight
            text: root.nowPlaying.lookingUp ? qsTr("Looking up…") : root.nowPlaying.genre
            visible: root.nowPlaying.automatic
        }
        Icon {
            id: busy
            anchors.right: toggle.left
            anchors.rightMargin: visible ? 10 : 4
            anchors.verticalCenter: parent.verticalCenter
            color: Theme.secondary
            name: "circle-notch"
            objectName: "busy"
            size: 14
            visible: root.nowPlaying.lookingUp
            width: visible ? 14 : 0

            NumberAnimation on rotation  {
                duration: 900
                from: 0
                loops: Animation.Infinite
                running: busy.visible
                to: 360
            }
        }
        TintedSwitch {
            id: toggle
            accent: root.accent
            anchors.right: parent.right
            anchors.rightMargin: Theme.margin
            anchors.verticalCenter: parent.verticalCenter
            checked: root.nowPlaying.automatic
            text: caption.text

            onToggled: root.nowPlaying.automatic = checked
        }
    }
    Item {
        id: notice
        anchors.top: automatic.bottom
        height: 26
        visible: root.nowPlaying.noticeDue
        width: parent.width

        TextLabel {
            Accessible.name: text
            Accessible.role: Accessible.AlertMessage
            anchors.left: parent.left
            anchors.leftMargin: Theme.margin + 27
            anchors.right: dismiss.left
            anchors.rightMargin: 4
            anchors.verticalCenter: parent.verticalCenter
            color: Theme.secondary
            font.pixelSize: 10
            text: qsTr("Artist names are sent to Last.fm to find genres.")
        }
        SymbolButton {
            id: dismiss
            anchors.right: parent.right
            anchors.rightMargin: Theme.margin - 2
            anchors.verticalCenter: parent.verticalCenter
            help: qsTr("Understood")
            iconSize: 12
            symbol: "check"

            onClicked: root.nowPlaying.dismissNotice()
        }
    }

    // Text that is exposed to screen readers.
    component ReadLabel: TextLabel {
        Accessible.name: text
        Accessible.role: Accessible.StaticText
    }
}
