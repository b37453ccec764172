import QtQuick
import Halvo

// Takes a dragged colour over a circle: entering puts it there at once, dropping ends the drag.
DropArea {
    id: root

    required property CustomColors colors
    required property string draggingCustomID
    required property string targetID

    signal taken

    anchors.fill: parent

    onDropped: drop => {
        root.taken();
        drop.accept(Qt.MoveAction);
    }
    onEntered: drag => {
        const dragged = draggingCustomID;
        drag.accept(Qt.MoveAction);
        if (dragged !== "" && dragged !== targetID)
            root.colors.moveOnto(dragged, targetID);
    }
}
