import QtQuick
import QtQuick.Window
import Halvo

// A menu in a window of its own, so that it may be larger than the panel. The keyboard stays with
// the panel: the owner passes its keys on while the menu is visible.
Window {
    id: root

    property int current: -1
    property alias delegate: entries.delegate
    property int minimumContentWidth: 120
    property alias model: entries.model
    required property Item owner

    function entryAt(index: int): MenuEntry {
        return entries.itemAt(index) as MenuEntry;
    }

    function openAt(x: real, y: real) {
        root.width = Math.max(minimumContentWidth, column.implicitWidth + 10);
        root.height = Math.min(column.implicitHeight + 10, 480);
        const edge = owner.Screen;
        root.x = Math.max(edge.virtualX, Math.min(x, edge.virtualX + edge.width - root.width));
        root.y = Math.max(edge.virtualY, Math.min(y, edge.virtualY + edge.height - root.height));
        root.visible = true;
    }

    // With the entry of this index over the owner, as pickers do.
    function openBelow(item: Item, index: int) {
        const place = item.mapToGlobal(0, item.height + 2);
        root.current = index;
        root.openAt(place.x, place.y);
    }

    function openAtPointer(item: Item, x: real, y: real) {
        const place = item.mapToGlobal(x, y);
        root.current = -1;
        root.openAt(place.x, place.y);
    }

    function handleKey(event: var) {
        event.accepted = true;
        const step = event.key === Qt.Key_Down ? 1 : event.key === Qt.Key_Up ? -1 : 0;
        if (step !== 0) {
            root.current = Math.max(0, Math.min(root.current + step, entries.count - 1));
        } else if (event.key === Qt.Key_Return || event.key === Qt.Key_Enter || event.key === Qt.Key_Space) {
            const entry = root.entryAt(root.current);
            if (entry)
                entry.click();
        } else if (event.key === Qt.Key_Escape || event.key === Qt.Key_Tab) {
            root.close();
        }
    }

    color: "transparent"
    flags: Qt.Popup | Qt.FramelessWindowHint | Qt.NoDropShadowWindowHint
    transientParent: owner.Window.window

    Rectangle {
        anchors.fill: parent
        border.color: Theme.border
        color: Theme.menu
        radius: 6

        Flickable {
            anchors.fill: parent
            anchors.margins: 5
            clip: contentHeight > height
            contentHeight: column.implicitHeight

            Column {
                id: column

                width: parent.width

                Repeater {
                    id: entries
                }
            }
        }
    }
}
