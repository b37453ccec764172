import QtQuick
import Halvo

// Takes a dragged preset over a pill: entering puts it there at once, dropping ends the drag.
DropArea {
    id: root

    required property string draggingPresetID
    required property Presets presets
    required property string targetPresetID

    signal taken

    anchors.fill: parent

    onDropped: drop => {
        root.taken();
        drop.accept(Qt.MoveAction);
    }
    onEntered: drag => {
        const dragged = draggingPresetID;
        drag.accept(Qt.MoveAction);
        if (dragged !== "" && dragged !== targetPresetID)
            root.presets.moveOnto(dragged, targetPresetID);
    }
}
