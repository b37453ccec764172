import QtQuick
import Halvo

// A colour that somebody added: can be deleted, and dragged among its like.
Item {
    id: root

    required property string colorID
    required property CustomColors colors
    property string draggingCustomID: ""
    required property color fill
    required property string hex
    required property MenuWindow menu
    required property string name
    required property Settings settings

    signal dragBegan
    signal dragEnded
    signal menuRequested(real x, real y, int index)

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
        chosen: root.settings.accentHex === root.hex
        fill: root.fill
        height: 22
        help: root.name + " " + root.hex
        width: 22

        Keys.onPressed: event => {
            if (root.menu.visible) {
                root.menu.handleKey(event);
            } else if (event.key === Qt.Key_Menu || (event.key === Qt.Key_F10 && event.modifiers & Qt.ShiftModifier)) {
                root.menuRequested(0, circle.height + 2, 0);
                event.accepted = true;
            }
        }
        onClicked: root.settings.accentHex = root.hex

        DragHandler {
            id: handler
            target: null

            onActiveChanged: {
                if (active) {
                    root.dragBegan();
                    return;
                }
                circle.Drag.drop();
                root.dragEnded();
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

            onClicked: mouse => root.menuRequested(mouse.x, mouse.y, -1)
        }
    }
    ColorDropDelegate {
        colors: root.colors
        draggingCustomID: root.draggingCustomID
        targetID: root.colorID

        onTaken: root.dragEnded()
    }
    Binding {
        property: "z"
        target: root
        value: handler.active ? 1 : 0
    }
}
