import QtQuick
import Halvo

// The place of one preset in the strip: it jumps to where it belongs, and its pill follows. So a
// drag meets the places as they are, not on their way.
Item {
    id: root

    required property color accent
    required property string presetID
    required property string name
    required property bool isCustom
    required property bool isActive
    required property Presets presets
    required property PresetStripView strip
    required property int index

    property real previousX: 0
    readonly property bool renaming: strip.renamingPresetID === presetID

    function focusNeighbour(by: int) {
        const next = by > 0 ? pill.nextItemInFocusChain(true) : pill.nextItemInFocusChain(false);
        if (next)
            next.forceActiveFocus(by > 0 ? Qt.TabFocusReason : Qt.BacktabFocusReason);
    }

    height: 28
    width: renaming ? 90 : pill.implicitWidth

    onXChanged: {
        if (root.strip.draggingPresetID !== "") {
            slide.stop();
            shown.x += previousX - x;
            slide.start();
        }
        previousX = x;
    }

    Item {
        id: shown

        height: parent.height
        width: parent.width

        NumberAnimation on x {
            id: slide

            duration: Theme.animation
            easing.type: Easing.OutCubic
            running: false
            to: 0
        }

        PresetPill {
            id: pill

            Keys.onLeftPressed: root.focusNeighbour(-1)
            Keys.onPressed: event => {
                if (menu.visible) {
                    menu.handleKey(event);
                } else if (event.key === Qt.Key_Menu || (event.key === Qt.Key_F10 && event.modifiers & Qt.ShiftModifier)) {
                    menu.openBelow(pill, 0);
                    event.accepted = true;
                } else if (event.key === Qt.Key_F2 && root.isCustom) {
                    root.strip.renamingPresetID = root.presetID;
                    event.accepted = true;
                }
            }
            Keys.onRightPressed: root.focusNeighbour(1)
            accent: root.accent
            isActive: root.isActive
            isCustom: root.isCustom
            name: root.name
            opacity: root.strip.draggingPresetID === root.presetID ? 0.4 : 1
            visible: !root.renaming

            onActiveFocusChanged: {
                if (activeFocus)
                    root.strip.reveal(root);
            }
            onClicked: root.presets.activate(root.presetID)

            DragHandler {
                id: handler

                target: null
                yAxis.enabled: true

                onActiveChanged: {
                    if (active) {
                        const hold = pill.mapFromItem(null, centroid.scenePressPosition);
                        root.strip.beginDrag(root, hold, root.strip.mapFromItem(null, centroid.scenePosition));
                    } else {
                        root.strip.endDrag();
                    }
                }
                onCentroidChanged: {
                    if (active)
                        root.strip.continueDrag(root.strip.mapFromItem(null, centroid.scenePosition));
                }
            }

            MouseArea {
                acceptedButtons: Qt.RightButton
                anchors.fill: parent

                onClicked: mouse => menu.openAtPointer(this, mouse.x, mouse.y)
            }
        }

        RenameField {
            anchors.fill: parent
            visible: root.renaming

            onAbandoned: root.strip.renamingPresetID = ""
            onCommitted: name => {
                root.strip.renamingPresetID = "";
                root.presets.rename(root.presetID, name);
            }
            onVisibleChanged: {
                if (visible)
                    begin(root.name);
            }
        }
    }

    PresetDropDelegate {
        presets: root.presets
        strip: root.strip
        targetPresetID: root.presetID
    }

    MenuWindow {
        id: menu

        model: root.isCustom ? [qsTr("Duplicate"), qsTr("Rename"), qsTr("Delete")] : [qsTr("Duplicate")]
        owner: pill

        delegate: MenuEntry {
            required property int index
            required property string modelData

            menu: menu
            text: modelData

            onTriggered: {
                if (index === 0)
                    root.presets.duplicate(root.presetID);
                else if (index === 1)
                    root.strip.renamingPresetID = root.presetID;
                else
                    root.presets.remove(root.presetID);
            }
        }
    }
}
