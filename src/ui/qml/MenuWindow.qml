pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Window
import Halvo

// A menu in its own window, so that it can be larger than the panel. Where the panel keeps the keyboard focus,
// the owner forwards its keys while the menu is visible.
Window {
    id: root

    property int checkedIndex: -1
    property int current: -1
    property bool hasChecks: false
    property int minimumContentWidth: 120
    required property Item owner
    property var texts: []

    signal triggered(int index)

    function choose(index: int): void {
        root.visible = false;
        owner.Window.window.requestActivate(); // where popups get the keyboard focus
        root.triggered(index);
    }
    function handleKey(event: KeyEvent): void {
        event.accepted = true;
        const steps = {
            [Qt.Key_Down]: 1,
            [Qt.Key_Up]: -1,
            [Qt.Key_PageDown]: 10,
            [Qt.Key_PageUp]: -10,
            [Qt.Key_End]: entries.count,
            [Qt.Key_Home]: -entries.count
        };
        if (event.key in steps) {
            root.mark(Math.max(0, Math.min(root.current + steps[event.key], entries.count - 1)));
        } else if (event.key === Qt.Key_Return || event.key === Qt.Key_Enter || event.key === Qt.Key_Space) {
            if (root.current >= 0)
                root.choose(root.current);
        } else if (event.key === Qt.Key_Escape || event.key === Qt.Key_Tab) {
            root.visible = false;
        }
    }
    // By keyboard: scrolls to the entry and notifies screen readers.
    function mark(index: int): void {
        root.current = index;
        const entry = entries.itemAt(index);
        if (!entry)
            return;
        list.contentY = Math.max(entry.y + entry.height - list.height, Math.min(list.contentY, entry.y));
        Display.announceFocus(entry);
    }
    function openAt(x: real, y: real): void {
        const screen = owner.Screen;
        // Measured one by one, because the column is laid out later.
        let width = root.minimumContentWidth;
        for (let index = 0; index < entries.count; ++index)
            width = Math.max(width, entries.itemAt(index).implicitWidth + 10);
        root.width = Math.min(width, screen.width);
        root.height = Math.min(entries.count * 24 + 10, 480);
        root.x = Math.max(screen.virtualX, Math.min(x, screen.virtualX + screen.width - root.width));
        root.y = Math.max(screen.virtualY, Math.min(y, screen.virtualY + screen.height - root.height));
        root.visible = true;
    }

    // At a place in the item; when opened by keyboard an entry is highlighted.
    function openAtItem(item: Item, x: real, y: real, index: int): void {
        const place = item.mapToGlobal(x, y);
        root.openAt(place.x, place.y);
        root.mark(index);
    }

    color: "transparent"
    flags: Qt.Popup | Qt.FramelessWindowHint | Qt.NoDropShadowWindowHint | Qt.WindowDoesNotAcceptFocus
    transientParent: owner.Window.window

    Rectangle {
        Accessible.role: Accessible.PopupMenu
        anchors.fill: parent
        border.color: Theme.border
        color: Theme.menu
        focus: true
        radius: 6

        Keys.onPressed: event => root.handleKey(event)

        Flickable {
            id: list
            anchors.fill: parent
            anchors.margins: 5
            boundsBehavior: Flickable.StopAtBounds
            clip: contentHeight > height
            contentHeight: column.implicitHeight

            Column {
                id: column
                width: parent.width

                Repeater {
                    id: entries
                    model: root.texts

                    delegate: MenuEntry {
                        required property int index
                        required property string modelData

                        current: root.current === index
                        hasMark: root.hasChecks
                        marked: root.checkedIndex === index
                        text: modelData
                        width: Math.max(implicitWidth, root.width - 10)

                        onClicked: root.choose(index)
                        onHoveredChanged: {
                            if (hovered)
                                root.current = index;
                        }
                    }
                }
            }
        }
    }
}
