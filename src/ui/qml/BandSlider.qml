import QtQuick
import QtQuick.Templates as T
import Halvo

// One band: its gain on a vertical track, over its current level.
T.Slider {
    id: root

    property color accent: Theme.accent
    readonly property color barColor: gain > 0 ? accent : gain < 0 ? Theme.negative : Theme.neutral
    required property real gain
    readonly property bool held: mouse.pressed || visualFocus
    readonly property real knobY: Math.round(trackHeight * (0.5 - gain / (2 * maxGain)))
    required property string label
    property real maxGain: 20

    // For screen readers.
    readonly property real maximumValue: to
    readonly property real minimumValue: from
    required property real spectrumLevel
    property real trackHeight: 150

    signal gainRequested(real gain)

    Accessible.name: label.endsWith("K") ? qsTr("%1 kHz").arg(label.slice(0, -1)) : qsTr("%1 Hz").arg(label)
    focusPolicy: Qt.StrongFocus
    from: -maxGain
    implicitHeight: trackHeight + 20
    implicitWidth: 26
    orientation: Qt.Vertical
    stepSize: 0.5
    to: maxGain
    value: gain

    Keys.onLeftPressed: root.decrease()
    Keys.onPressed: event => {
        if (event.key !== Qt.Key_Home)
            return;
        event.accepted = true;
        root.gainRequested(0);
    }
    Keys.onRightPressed: root.increase()
    // Moved by key or screen reader; the pointer sets the gain directly. No effect without a preset.
    onValueChanged: {
        if (Math.abs(value - Math.max(from, Math.min(gain, to))) < 1e-6)
            return;
        root.gainRequested(value);
        value = Qt.binding(() => root.gain);
    }

    SpectrumBar {
        color: Theme.spectrum
        height: root.trackHeight
        level: root.spectrumLevel
        width: 20
        x: (root.width - width) / 2
    }
    Rectangle {
        color: Theme.track
        height: root.trackHeight
        radius: 2
        width: 4
        x: (root.width - width) / 2
    }
    Rectangle {
        readonly property real middle: root.trackHeight / 2

        border.color: Theme.edgeOf(root.barColor)
        border.width: root.gain === 0 ? 0 : 1
        color: root.barColor
        height: Math.abs(root.knobY - middle)
        radius: 2
        width: 6
        x: (root.width - width) / 2
        y: Math.min(root.knobY, middle)
    }
    Rectangle {
        id: knob
        border.color: Theme.knobBorder
        color: mouse.pressed ? Theme.knobPressed : Theme.knob
        height: 14
        radius: 7
        width: 14
        x: (root.width - width) / 2
        y: root.knobY - height / 2

        Rectangle {
            anchors.centerIn: parent
            border.color: root.gain === 0 ? "transparent" : Theme.dark ? color : Theme.edgeOf(color)
            color: root.barColor
            height: 6
            radius: 3
            width: 6
        }
        FocusRing {
            control: root
            gap: 1
            radius: 10
        }
    }
    TextLabel {
        color: root.held || mouse.containsMouse ? Theme.primary : Theme.secondary
        font.pixelSize: 10
        horizontalAlignment: Text.AlignHCenter
        text: root.label
        width: root.width
        y: root.trackHeight + 6
    }
    Rectangle {
        border.color: Theme.border
        color: Theme.menu
        height: 18
        radius: 4
        visible: root.held
        width: reading.implicitWidth + 12
        x: (root.width - width) / 2
        y: knob.y > 10 ? knob.y - 22 : knob.y + 18

        TextLabel {
            id: reading
            anchors.centerIn: parent
            font.pixelSize: 10
            font.weight: Font.Medium
            text: Display.gainText(root.gain)
        }
    }
    MouseArea {
        id: mouse

        property bool reset: false

        function drag(y: real) {
            root.gainRequested(Display.gainAt(y, root.trackHeight, root.maxGain));
        }

        height: root.trackHeight + 8
        hoverEnabled: true
        preventStealing: true
        width: root.width

        onDoubleClicked: {
            reset = true;
            root.gainRequested(0);
        }
        onPositionChanged: event => {
            if (pressed && !reset)
                drag(event.y);
        }
        onPressed: event => {
            reset = false;
            root.forceActiveFocus(Qt.MouseFocusReason);
            drag(event.y);
        }
    }
    Binding {
        property: "z"
        target: root
        value: root.held ? 1 : 0
    }
}
