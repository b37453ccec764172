import QtQuick
import Halvo

// Lets an item stay behind when the place that it stands in jumps, and slide after it.
ParallelAnimation {
    id: root

    required property Item item

    function lag(x: real, y: real) {
        stop();
        item.x += x;
        item.y += y;
        start();
    }

    NumberAnimation {
        duration: Theme.animation
        easing.type: Easing.OutCubic
        property: "x"
        target: root.item
        to: 0
    }
    NumberAnimation {
        duration: Theme.animation
        easing.type: Easing.OutCubic
        property: "y"
        target: root.item
        to: 0
    }
}
