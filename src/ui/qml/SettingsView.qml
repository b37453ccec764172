pragma ComponentBehavior: Bound
import QtQuick
import Halvo

// The settings window: four tabs, each with a placeholder.
Rectangle {
    id: root

    property int currentIndex: 0
    readonly property var pages: [{
            "label": qsTr("General"),
            "symbol": "gear-six"
        }, {
            "label": qsTr("Presets"),
            "symbol": "sliders-horizontal"
        }, {
            "label": qsTr("Rules"),
            "symbol": "git-branch"
        }, {
            "label": qsTr("Driver"),
            "symbol": "waveform"
        }]
    readonly property string title: pages[currentIndex].label

    color: Theme.background
    implicitHeight: 360
    implicitWidth: 480

    Row {
        id: bar
        Accessible.role: Accessible.PageTabList
        anchors.horizontalCenter: parent.horizontalCenter
        spacing: 4
        y: 8

        Repeater {
            id: tabs
            model: root.pages

            delegate: SettingsTab {
                required property int index
                required property var modelData

                chosen: root.currentIndex === index
                symbol: modelData.symbol
                text: modelData.label

                onClicked: root.currentIndex = index
            }
        }
    }
    SectionDivider {
        width: root.width
        x: 0
        y: 66
    }
    Item {
        anchors.bottom: parent.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: bar.bottom
        anchors.topMargin: 8

        GeneralSettingsView {
            visible: root.currentIndex === 0
        }
        PresetsSettingsView {
            visible: root.currentIndex === 1
        }
        RulesSettingsView {
            visible: root.currentIndex === 2
        }
        DriverSettingsView {
            visible: root.currentIndex === 3
        }
    }
}
