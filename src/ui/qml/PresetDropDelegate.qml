import QtQuick
import Halvo

// Takes a dragged preset over a pill: entering puts it there at once, dropping ends the drag.
DropArea {
    id: root

    required property Presets presets
    required property PresetStripView strip
    required property string targetPresetID

    anchors.fill: parent

    onDropped: drop => {
        root.strip.draggingPresetID = "";
        drop.accept(Qt.MoveAction);
    }
    onEntered: drag => {
        const dragged = root.strip.draggingPresetID;
        drag.accept(Qt.MoveAction);
        if (dragged !== "" && dragged !== targetPresetID)
            root.presets.moveOnto(dragged, targetPresetID);
    }
}
