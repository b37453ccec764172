import QtQuick
import Halvo

// Takes a dragged colour over a circle: entering puts it there at once, dropping ends the drag.
DropArea {
    id: root

    required property CustomColors colors
    required property AccentColors row
    required property string targetID

    anchors.fill: parent

    onDropped: drop => {
        root.row.draggingCustomID = "";
        drop.accept(Qt.MoveAction);
    }
    onEntered: drag => {
        const dragged = root.row.draggingCustomID;
        drag.accept(Qt.MoveAction);
        if (dragged !== "" && dragged !== targetID)
            root.colors.moveOnto(dragged, targetID);
    }
}
