pragma ComponentBehavior: Bound
import QtQuick
import Halvo

// The place of one preset in the strip. It moves at once and its pill follows with an animation, so a drag
// never hits a moving place.
Item {
    id: root

    required property color accent
    property string draggingPresetID: ""
    required property int index
    required property bool isActive
    required property bool isCustom
    required property MenuWindow menu
    required property string name
    property bool placed: false // in the row, not moving
    required property string presetID
    required property Presets presets
    property real previousX: 0
    property bool renaming: false

    signal dragBegan(point hold, point place)
    signal dragEnded
    signal dragMoved(point place)
    signal dragTaken
    signal menuRequested(real x, real y, int index)
    signal renameEnded
    signal renameRequested
    signal revealRequested

    function focusNeighbour(by: int) {
        const next = by > 0 ? pill.nextItemInFocusChain(true) : pill.nextItemInFocusChain(false);
        if (next)
            next.forceActiveFocus(by > 0 ? Qt.TabFocusReason : Qt.BacktabFocusReason);
    }

    height: 28
    width: renaming ? 90 : pill.implicitWidth

    onXChanged: {
        if (placed)
            slide.lag(previousX - x, 0);
        previousX = x;
    }

    Item {
        id: shown
        height: parent.height
        width: parent.width

        PresetPill {
            id: pill
            accent: root.accent
            isActive: root.isActive
            isCustom: root.isCustom
            isLifted: rest.isLong && rest.pressed
            name: root.name
            opacity: root.draggingPresetID === root.presetID ? 0.4 : 1
            visible: !root.renaming

            Keys.onLeftPressed: root.focusNeighbour(-1)
            Keys.onPressed: event => {
                if (root.menu.visible) {
                    root.menu.handleKey(event);
                } else if (event.key === Qt.Key_Menu || (event.key === Qt.Key_F10 && event.modifiers & Qt.ShiftModifier)) {
                    root.menuRequested(0, pill.height + 2, 0);
                    event.accepted = true;
                } else if (event.key === Qt.Key_F2 && root.isCustom) {
                    root.renameRequested();
                    event.accepted = true;
                }
            }
            Keys.onRightPressed: root.focusNeighbour(1)
            onActiveFocusChanged: {
                if (activeFocus)
                    root.revealRequested();
            }
            onClicked: root.presets.activate(root.presetID)

            Carrier {
                acceptedDevices: PointerDevice.AllDevices & ~PointerDevice.TouchScreen
            }
            // A finger carries the pill after it has rested on it, and scrolls the strip otherwise.
            Carrier {
                acceptedDevices: PointerDevice.TouchScreen
                xAxis.enabled: rest.isLong
                yAxis.enabled: rest.isLong
            }
            TapHandler {
                id: rest

                property bool isLong: false

                acceptedDevices: PointerDevice.TouchScreen

                onLongPressed: isLong = true
                onPressedChanged: {
                    if (pressed)
                        isLong = false;
                }
            }
            MouseArea {
                acceptedButtons: Qt.RightButton
                anchors.fill: parent

                onClicked: mouse => root.menuRequested(mouse.x, mouse.y, -1)
            }
        }
        Loader {
            id: field
            active: root.renaming
            anchors.fill: parent
            source: "RenameField.qml"

            // Leaving the field commits; losing the window's focus to a menu does not.
            onFocusChanged: {
                if (!focus && item)
                    (item as RenameField).end(true);
            }
            onLoaded: (item as RenameField).begin(root.name)
        }
        Connections {
            function onAbandoned() {
                root.renameEnded();
            }
            function onCommitted(name: string) {
                root.presets.rename(root.presetID, name);
                root.renameEnded();
            }

            target: field.item as RenameField
        }
    }
    SlideAnimation {
        id: slide
        item: shown
    }
    PresetDropDelegate {
        draggingPresetID: root.draggingPresetID
        presets: root.presets
        targetPresetID: root.presetID

        onTaken: root.dragTaken()
    }

    component Carrier: DragHandler {
        target: null

        onActiveChanged: {
            if (active) {
                const hold = pill.mapFromItem(null, centroid.scenePressPosition);
                root.dragBegan(hold, centroid.scenePosition);
            } else {
                root.dragEnded();
            }
        }
        onCentroidChanged: {
            if (active)
                root.dragMoved(centroid.scenePosition);
        }
    }
}
