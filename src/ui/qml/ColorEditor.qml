import QtQuick
import QtQuick.Templates as T
import Halvo

// Picks or types a new colour.
Item {
    id: root

    property alias newColorHex: field.text
    property color pickerColor: Qt.hsva(hueStrip.hue, plane.saturation, plane.brightness, 1)

    signal confirmed(string typed)

    function takePicked() {
        const digits = Display.hexDigits(pickerColor);
        if (digits.length > 0)
            newColorHex = digits;
    }

    implicitHeight: 118
    implicitWidth: Theme.panelWidth

    ColorPlane {
        id: plane

        property real brightness: 1
        property real saturation: 0.6

        function pick(x: real, y: real) {
            saturation = Math.max(0, Math.min(x / width, 1));
            brightness = 1 - Math.max(0, Math.min(y / height, 1));
            root.takePicked();
        }

        Accessible.description: qsTr("%1 % and %2 %").arg(Math.round(saturation * 100)).arg(Math.round(brightness * 100))
        Accessible.name: qsTr("Saturation and brightness")
        Accessible.role: Accessible.ColorChooser
        activeFocusOnTab: true
        height: 64
        hue: hueStrip.hue
        width: Theme.panelWidth - 2 * Theme.margin
        x: Theme.margin
        y: 12

        Keys.onPressed: event => {
            const across = event.key === Qt.Key_Right ? 0.02 : event.key === Qt.Key_Left ? -0.02 : 0;
            const up = event.key === Qt.Key_Up ? 0.02 : event.key === Qt.Key_Down ? -0.02 : 0;
            if (across === 0 && up === 0)
                return;
            event.accepted = true;
            pick((saturation + across) * width, (1 - brightness - up) * height);
        }

        Rectangle {
            border.color: "#FFFFFF"
            border.width: 2
            color: root.pickerColor
            height: 14
            radius: 7
            width: 14
            x: plane.saturation * plane.width - 7
            y: (1 - plane.brightness) * plane.height - 7
        }
        Rectangle {
            anchors.fill: parent
            anchors.margins: -3
            border.color: Theme.lineOf(Theme.accent)
            border.width: 2
            color: "transparent"
            radius: 6
            visible: plane.activeFocus
        }
        MouseArea {
            anchors.fill: parent
            preventStealing: true

            onPositionChanged: event => plane.pick(event.x, event.y)
            onPressed: event => plane.pick(event.x, event.y)
        }
    }
    ColorPlane {
        id: hueStrip

        // For screen readers.
        readonly property real maximumValue: 1
        readonly property real minimumValue: 0
        readonly property real stepSize: 0.01
        property real value: hue

        function pick(value: real) {
            hue = Math.max(0, Math.min(value, 0.999));
            root.takePicked();
        }

        Accessible.name: qsTr("Hue")
        Accessible.role: Accessible.Slider
        activeFocusOnTab: true
        anchors.left: plane.left
        anchors.right: field.left
        anchors.rightMargin: 10
        anchors.verticalCenter: field.verticalCenter
        height: 12
        hue: 0.6
        hues: true

        Keys.onLeftPressed: pick(hue - stepSize)
        Keys.onRightPressed: pick(hue + stepSize)
        onValueChanged: {
            if (value === hue)
                return;
            pick(value);
            value = Qt.binding(() => hue);
        }

        Rectangle {
            border.color: "#FFFFFF"
            border.width: 2
            color: Qt.hsva(hueStrip.hue, 1, 1, 1)
            height: 14
            radius: 7
            width: 14
            x: hueStrip.hue * (hueStrip.width - width)
            y: -1
        }
        Rectangle {
            anchors.fill: parent
            anchors.margins: -3
            border.color: Theme.lineOf(Theme.accent)
            border.width: 2
            color: "transparent"
            radius: 8
            visible: hueStrip.activeFocus
        }
        MouseArea {
            anchors.fill: parent
            anchors.margins: -4
            preventStealing: true

            onPositionChanged: event => hueStrip.pick((event.x - 4) / hueStrip.width)
            onPressed: event => hueStrip.pick((event.x - 4) / hueStrip.width)
        }
    }
    T.TextField {
        id: field
        Accessible.name: qsTr("Color as six hexadecimal digits")
        anchors.right: confirm.left
        anchors.rightMargin: 6
        color: Theme.primary
        font.family: Theme.fontFamily
        font.pixelSize: 11
        height: 24
        leftPadding: 8
        placeholderText: "RRGGBB"
        rightPadding: 6
        selectByMouse: true
        selectedTextColor: Theme.textOn(Theme.accent)
        selectionColor: Theme.accent
        verticalAlignment: TextInput.AlignVCenter
        width: 70
        y: 90

        background: Rectangle {
            border.color: field.activeFocus ? Theme.accent : Theme.fieldBorder
            border.width: field.activeFocus ? 2 : 1
            color: Theme.field
            radius: 6

            TextLabel {
                anchors.fill: parent
                anchors.leftMargin: 8
                color: Theme.faint
                font: field.font
                text: field.placeholderText
                visible: field.text.length === 0
            }
        }

        onAccepted: root.confirmed(text)
    }
    SymbolButton {
        id: confirm
        anchors.right: parent.right
        anchors.rightMargin: Theme.margin
        anchors.verticalCenter: field.verticalCenter
        help: qsTr("Add this color")
        iconSize: 14
        symbol: "check"
        tint: Theme.primary

        onClicked: root.confirmed(field.text)
    }
}
