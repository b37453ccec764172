pragma ComponentBehavior: Bound
import QtQuick
import Halvo

// The row of presets: scrolls sideways, is reordered by dragging.
Item {
    id: root

    property color accent: Theme.accent
    property string draggingPresetID: ""
    required property NowPlaying nowPlaying
    required property Presets presets
    property string renamingPresetID: ""
    readonly property bool showsGenre: nowPlaying.automatic && nowPlaying.hasGenre

    function beginDrag(slot: PresetSlot, hold: point, place: point) {
        ghost.name = slot.name;
        ghost.isActive = slot.isActive;
        ghost.symbol = slot.isCustom ? "sliders-horizontal" : "";
        ghost.hold = hold;
        ghost.follow(place);
        root.draggingPresetID = slot.presetID;
        ghost.Drag.start();
    }
    function continueDrag(place: point) {
        if (draggingPresetID === "")
            return;
        ghost.follow(place);
        edge.pull = place.x < 24 ? -1 : place.x > root.width - 24 ? 1 : 0;
    }
    function endDrag() {
        edge.pull = 0;
        ghost.Drag.drop();
        root.draggingPresetID = "";
    }

    // Scrolls just far enough to show the whole item.
    function reveal(item: Item) {
        const left = item.mapToItem(row, 0, 0).x;
        const least = left + item.width + 2 * Theme.margin - strip.width;
        strip.glideTo(Math.min(Math.max(strip.destination, least), left));
    }

    Accessible.name: qsTr("Presets")
    Accessible.role: Accessible.Grouping
    implicitHeight: 48
    implicitWidth: Theme.panelWidth

    Flickable {
        id: strip

        // Where it was last sent, perhaps beyond an end that moves on.
        property real aim: 0
        // Where it stands, or is on its way to.
        readonly property real destination: glide.running ? glide.to : contentX

        function glideTo(x: real) {
            if (root.draggingPresetID !== "")
                return scrollTo(x);
            aim = x;
            glide.to = within(x);
            glide.restart();
        }
        function scrollTo(x: real) {
            glide.stop();
            contentX = within(x);
        }
        function within(x: real): real {
            return Math.max(0, Math.min(x, contentWidth - width));
        }

        anchors.fill: parent
        anchors.leftMargin: 1 // within the border
        anchors.rightMargin: 1
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        contentHeight: height
        contentWidth: row.width + 2 * row.x
        flickableDirection: Flickable.HorizontalFlick
        interactive: false // a mouse drags pills, not the strip

        NumberAnimation on contentX  {
            id: glide
            duration: Theme.animation
            easing.type: Easing.OutCubic
            running: false
        }

        onContentWidthChanged: glideTo(glide.running ? aim : contentX)

        Row {
            id: row
            height: 28
            spacing: 8
            x: Theme.margin - 1
            y: 10

            onPositioningComplete: {
                for (let index = 0; index < slots.count; ++index)
                    slots.itemAt(index).placed = true;
            }

            AutoPresetPill {
                accent: root.accent
                isActive: true
                name: root.nowPlaying.genre
                visible: root.showsGenre
            }
            Repeater {
                id: slots
                model: root.presets

                delegate: PresetSlot {
                    id: slot
                    accent: root.accent
                    draggingPresetID: root.draggingPresetID
                    menu: presetMenu
                    presets: root.presets
                    renaming: root.renamingPresetID === presetID

                    onDragBegan: (hold, place) => root.beginDrag(slot, hold, root.mapFromItem(null, place))
                    onDragEnded: root.endDrag()
                    onDragMoved: place => root.continueDrag(root.mapFromItem(null, place))
                    onDragTaken: root.draggingPresetID = ""
                    onMenuRequested: (x, y, index) => {
                        presetMenu.presetID = presetID;
                        presetMenu.isCustom = isCustom;
                        presetMenu.openAtItem(slot, x, y, index);
                    }
                    onRenameEnded: root.renamingPresetID = ""
                    onRenameRequested: root.renamingPresetID = presetID
                    onRevealRequested: root.reveal(slot)
                }
            }
            SymbolButton {
                anchors.verticalCenter: parent.verticalCenter
                help: qsTr("Create custom preset")
                iconSize: 18
                implicitHeight: 26
                implicitWidth: 26
                symbol: "plus-circle"

                onActiveFocusChanged: {
                    if (activeFocus)
                        root.reveal(this);
                }
                onClicked: {
                    root.presets.create();
                    strip.glideTo(Infinity);
                }
            }
        }
    }
    // Hints at more presets beyond an end.
    EndFade {
        anchors.left: strip.left
        opacity: Math.min(strip.contentX / width, 1)
    }
    EndFade {
        anchors.right: strip.right
        opacity: Math.min((strip.contentWidth - strip.width - strip.contentX) / width, 1)
        rotation: 180
    }
    Wheel {
        orientation: Qt.Horizontal
    }
    Wheel {
        orientation: Qt.Vertical
    }
    DragHandler {
        property real startX: 0

        acceptedDevices: PointerDevice.TouchScreen
        // Not from the handler of a pill that is being carried.
        grabPermissions: PointerHandler.CanTakeOverFromItems | PointerHandler.ApprovesTakeOverByAnything
        target: null
        yAxis.enabled: false

        onActiveChanged: startX = strip.contentX
        onCentroidChanged: {
            if (active)
                strip.scrollTo(startX + centroid.scenePressPosition.x - centroid.scenePosition.x);
        }
        onGrabChanged: (transition, point) => {
            if (transition === PointerDevice.UngrabExclusive)
                strip.flick(point.velocity.x, 0);
        }
    }

    // The dragged item, which the slots' drop areas accept.
    PillBody {
        id: ghost

        property point hold

        function follow(place: point) {
            x = Math.max(4, Math.min(place.x - hold.x, root.width - width - 4));
            y = 10;
            Drag.hotSpot.x = place.x - x;
            Drag.hotSpot.y = height / 2;
        }

        Drag.dragType: Drag.Internal
        Drag.mimeData: ({
                "text/plain": root.draggingPresetID
            })
        Drag.supportedActions: Qt.MoveAction
        accent: root.accent
        isLifted: true
        visible: root.draggingPresetID !== ""
        z: 1
    }

    // Scrolls by itself while a pill is held near an end.
    Timer {
        id: edge

        property int pull: 0

        interval: 16
        repeat: true
        running: pull !== 0

        onTriggered: {
            strip.scrollTo(strip.contentX + 5 * pull);
            ghost.Drag.hotSpot.x += 0.01 * pull; // makes the drop areas update
        }
    }
    MenuWindow {
        id: presetMenu

        property bool isCustom: false
        property string presetID: ""

        owner: root
        texts: isCustom ? [qsTr("Duplicate"), qsTr("Rename"), qsTr("Delete")] : [qsTr("Duplicate")]

        onTriggered: index => {
            if (index === 0)
                root.presets.duplicate(presetID);
            else if (index === 1)
                root.renamingPresetID = presetID;
            else
                root.presets.remove(presetID);
        }
    }

    component EndFade: Rectangle {
        height: root.height
        visible: opacity > 0
        width: Theme.margin

        gradient: Gradient {
            orientation: Gradient.Horizontal

            GradientStop {
                color: Theme.background
                position: 0
            }
            GradientStop {
                color: Qt.alpha(Theme.background, 0)
                position: 1
            }
        }
    }

    // Each hears the events that have something along its axis; the longer way of the two counts.
    component Wheel: WheelHandler {
        acceptedDevices: PointerDevice.Mouse | PointerDevice.TouchPad
        target: null

        onWheel: event => {
            const isUpright = Math.abs(event.angleDelta.y) > Math.abs(event.angleDelta.x);
            if (isUpright !== (orientation === Qt.Vertical))
                return;
            const pixels = isUpright ? event.pixelDelta.y : event.pixelDelta.x;
            const angle = isUpright ? event.angleDelta.y : event.angleDelta.x;
            // Fingers take the strip along with them, a wheel sends it on its way.
            if (pixels !== 0)
                strip.scrollTo(strip.contentX - pixels);
            else
                strip.glideTo(strip.destination - angle * 0.5);
        }
    }
}
