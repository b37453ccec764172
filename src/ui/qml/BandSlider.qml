import QtQuick
import QtQuick.Templates as T
import Halvo

// One band: its gain on a vertical track over the level that is heard there.
T.Control {
    id: root

    property color accent: Theme.accent
    readonly property color barColor: gain > 0 ? accent : gain < 0 ? Theme.negative : Theme.neutral
    required property real gain
    readonly property real knobY: trackHeight * (0.5 - gain / (2 * maxGain))
    required property string label
    property real maxGain: 20

    // For screen readers.
    readonly property real maximumValue: maxGain
    readonly property real minimumValue: -maxGain
    required property real spectrumLevel
    readonly property real stepSize: 0.5
    property real trackHeight: 150
    property real value: gain

    signal gainRequested(real gain)

    function step(by: real) {
        root.gainRequested(Math.max(-maxGain, Math.min(gain + by, maxGain)));
    }

    Accessible.name: qsTr("%1 Hz").arg(label)
    Accessible.role: Accessible.Slider
    focusPolicy: Qt.StrongFocus
    implicitHeight: trackHeight + 20
    implicitWidth: 27

    Accessible.onDecreaseAction: step(-stepSize)
    Accessible.onIncreaseAction: step(stepSize)
    Keys.onDownPressed: step(-stepSize)
    Keys.onLeftPressed: step(-stepSize)
    Keys.onPressed: event => {
        if (event.key !== Qt.Key_Home)
            return;
        event.accepted = true;
        root.gainRequested(0);
    }
    Keys.onRightPressed: step(stepSize)
    Keys.onUpPressed: step(stepSize)

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
        color: Theme.knob
        height: 14
        radius: 7
        width: 14
        x: (root.width - width) / 2
        y: Math.round(root.knobY - height / 2)

        Rectangle {
            anchors.centerIn: parent
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
        color: Theme.secondary
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
        visible: mouse.pressed || root.visualFocus
        width: reading.implicitWidth + 12
        x: (root.width - width) / 2
        y: knob.y > 24 ? knob.y - 22 : knob.y + 18

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
        preventStealing: true
        width: root.width

        onDoubleClicked: {
            reset = true;
            root.gainRequested(0);
        }
        onPositionChanged: event => {
            if (!reset)
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
        value: mouse.pressed || root.visualFocus ? 1 : 0
    }
}
