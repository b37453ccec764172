import QtQuick
import QtQuick.Templates as T
import Halvo

// A switch in the accent colour.
T.Switch {
    id: root

    property color accent: Theme.accent

    function change() {
        root.toggle();
        root.toggled();
    }

    Accessible.name: text
    focusPolicy: Qt.StrongFocus
    implicitHeight: 20
    implicitWidth: 34

    indicator: Rectangle {
        border.color: root.checked ? Theme.edgeOf(root.accent) : Theme.track
        color: root.checked ? root.accent : Theme.track
        height: 20
        radius: 10
        width: 34

        Behavior on color  {
            ColorAnimation {
                duration: 120
            }
        }

        FocusRing {
            control: root
            radius: 14
        }
        Rectangle {
            border.color: root.checked ? Qt.darker(root.accent, 1.15) : Qt.darker(Theme.track, 1.2)
            color: root.down ? Theme.knobPressed : Theme.knob
            height: 16
            radius: 8
            width: 16
            x: 2 + root.visualPosition * 14
            y: 2

            Behavior on x  {
                enabled: !root.down

                NumberAnimation {
                    duration: 120
                    easing.type: Easing.OutCubic
                }
            }
        }
    }

    Accessible.onPressAction: root.change()
    Accessible.onToggleAction: root.change()
}
