import QtQuick
import Halvo

// The place of a colour that somebody added: it can be deleted, and dragged among its like. The
// place jumps to where it belongs, and the circle follows.
Item {
    id: root

    required property string colorID
    required property CustomColors colors
    property string draggingCustomID: ""
    required property color fill
    required property string hex
    required property MenuWindow menu
    required property string name
    property bool placed: false // in the row, and not on its way there
    property real previousX: 0
    property real previousY: 0
    required property Settings settings

    signal dragBegan
    signal dragEnded
    signal menuRequested(real x, real y, int index)

    // The circle stays where it is, under the pointer or to slide after its place.
    function leave(x: real, y: real) {
        if (handler.active) {
            circle.x += x;
            circle.y += y;
        } else if (placed) {
            slide.lag(x, y);
        }
    }

    height: 22
    width: 22

    onXChanged: {
        leave(previousX - x, 0);
        previousX = x;
    }
    onYChanged: {
        leave(0, previousY - y);
        previousY = y;
    }

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
                    slide.stop();
                    root.dragBegan();
                    return;
                }
                circle.Drag.drop();
                root.dragEnded();
                slide.start();
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
    SlideAnimation {
        id: slide
        item: circle
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
