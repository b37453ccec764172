import QtQuick
import Halvo

// A colour that somebody added: can be deleted, and dragged among its like.
Item {
    id: root

    required property string colorID
    required property CustomColors colors
    required property color fill
    required property string hex
    required property string name
    required property AccentColors row
    required property Settings settings

    height: 22
    width: 22

    ColorCircle {
        id: circle

        Drag.active: handler.active
        Drag.dragType: Drag.Internal
        Drag.hotSpot: Qt.point(11, 11)
        Drag.mimeData: ({
                "text/plain": root.colorID
            })
        Keys.onPressed: event => {
            if (menu.visible) {
                menu.handleKey(event);
            } else if (event.key === Qt.Key_Menu || (event.key === Qt.Key_F10 && event.modifiers & Qt.ShiftModifier)) {
                menu.openBelow(circle, 0);
                event.accepted = true;
            }
        }
        chosen: root.settings.accentHex === root.hex
        fill: root.fill
        help: root.name + " " + root.hex
        height: 22
        width: 22

        onClicked: root.settings.accentHex = root.hex

        DragHandler {
            id: handler

            target: null

            onActiveChanged: {
                if (active) {
                    root.row.draggingCustomID = root.colorID;
                    return;
                }
                circle.Drag.drop();
                root.row.draggingCustomID = "";
                circle.x = 0;
                circle.y = 0;
            }
            onCentroidChanged: {
                if (!active)
                    return;
                const place = root.mapFromItem(null, centroid.scenePosition);
                circle.x = place.x - 11;
                circle.y = place.y - 11;
            }
        }

        MouseArea {
            acceptedButtons: Qt.RightButton
            anchors.fill: parent

            onClicked: mouse => menu.openAtPointer(this, mouse.x, mouse.y)
        }
    }

    ColorDropDelegate {
        colors: root.colors
        row: root.row
        targetID: root.colorID
    }

    MenuWindow {
        id: menu

        model: [qsTr("Delete")]
        owner: circle

        delegate: MenuEntry {
            required property string modelData

            menu: menu
            text: modelData

            onTriggered: root.colors.remove(root.colorID)
        }
    }

    Binding {
        property: "z"
        target: root
        value: handler.active ? 1 : 0
    }
}
