import QtQuick
import QtQuick.Templates as T
import Halvo

// Edits a name in place: Return commits, Escape does not.
T.TextField {
    id: root

    property bool editing: false

    signal abandoned
    signal committed(string name)

    function begin(name: string) {
        text = name;
        editing = true;
        selectAll();
        forceActiveFocus();
    }
    function end(commit: bool) {
        if (!editing)
            return;
        editing = false;
        if (commit)
            root.committed(text);
        else
            root.abandoned();
    }

    Accessible.name: qsTr("Name of the preset")
    color: Theme.primary
    font.family: Theme.fontFamily
    font.pixelSize: Theme.fontSize
    leftPadding: 8
    placeholderText: qsTr("Name")
    placeholderTextColor: Theme.faint
    rightPadding: 8
    selectByMouse: true
    selectedTextColor: Theme.textOn(Theme.accent)
    selectionColor: Theme.accent
    verticalAlignment: TextInput.AlignVCenter

    background: Rectangle {
        border.color: root.activeFocus ? Theme.accent : Theme.fieldBorder
        border.width: root.activeFocus ? 2 : 1
        color: Theme.field
        radius: 6

        TextLabel {
            anchors.fill: parent
            anchors.leftMargin: 8
            color: Theme.faint
            font: root.font
            text: root.placeholderText
            visible: root.text.length === 0
        }
    }

    Keys.onEscapePressed: end(false)
    onAccepted: end(true)
}
