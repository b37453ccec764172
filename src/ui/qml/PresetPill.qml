import QtQuick
import QtQuick.Templates as T
import Halvo

// One preset; a click chooses it.
T.RadioButton {
    id: root

    property color accent: Theme.accent
    required property bool isActive
    required property bool isCustom
    property bool isLifted: false
    required property string name

    Accessible.description: isCustom ? qsTr("Custom preset") : ""
    Accessible.name: name
    checked: isActive
    focusPolicy: Qt.StrongFocus
    implicitHeight: 28
    implicitWidth: implicitBackgroundWidth

    background: PillBody {
        accent: root.accent
        hovered: root.hovered
        isActive: root.isActive
        isLifted: root.isLifted
        name: root.name
        symbol: root.isCustom ? "sliders-horizontal" : ""

        FocusRing {
            control: root
            gap: 1
            radius: 16
        }
    }

    Accessible.onPressAction: root.clicked()
    Accessible.onToggleAction: root.clicked()
}
