import QtQuick
import QtQuick.Templates as T
import Halvo

// A horizontal slider whose filled part begins at `origin`.
T.Slider {
    id: root

    property color accent: Theme.accent
    // For screen readers.
    readonly property real maximumValue: to
    readonly property real minimumValue: from
    property string name
    property real origin: from
    readonly property real originPosition: (origin - from) / (to - from)

    // The value in the model; the slider can be ahead of it while it is dragged.
    property real setting: 0

    signal requested(real value)
    signal reset

    Accessible.name: name
    focusPolicy: Qt.StrongFocus
    implicitHeight: 20
    value: setting

    background: Rectangle {
        color: Theme.track
        height: 4
        radius: 2
        width: root.availableWidth
        x: root.leftPadding
        y: (root.height - height) / 2

        Rectangle {
            readonly property real start: Math.min(root.originPosition, root.visualPosition)

            border.color: Theme.edgeOf(root.accent)
            color: root.accent
            height: 4
            radius: 2
            width: Math.abs(root.visualPosition - root.originPosition) * parent.width
            x: start * parent.width
        }
    }
    handle: Rectangle {
        border.color: Theme.knobBorder
        color: root.pressed ? Theme.knobPressed : Theme.knob
        height: 14
        radius: 7
        width: 14
        x: root.leftPadding + root.visualPosition * (root.availableWidth - width)
        y: (root.height - height) / 2

        FocusRing {
            control: root
            gap: 1
            radius: 10
        }
    }

    Keys.onPressed: event => {
        if (event.key !== Qt.Key_Home)
            return;
        event.accepted = true;
        root.reset();
    }
    // Moved by pointer, key, wheel or screen reader.
    onValueChanged: {
        const shown = Math.max(from, Math.min(setting, to));
        if (Math.abs(value - shown) > 1e-6)
            root.requested(value);
    }
}
