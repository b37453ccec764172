import QtQuick
import Halvo

// The content of the panel: its sections from top to bottom.
FocusScope {
    id: root

    readonly property int animationDuration: Theme.animation
    required property Bands bands
    readonly property bool bandsVisible: shown && showAdvanced
    required property Devices devices
    required property Equalizer equalizer

    // Whether the desktop draws a frame around the window; its corners are square then.
    property bool framed: false
    readonly property bool moving: settingsPanel.unfolded > 0 && settingsPanel.unfolded < 1
    required property NowPlaying nowPlaying
    required property Presets presets
    required property Settings settings
    property bool showAdvanced: false
    property bool showSettings: false

    // Whether the panel is visible.
    property bool shown: true

    signal closeRequested
    signal quitRequested
    signal settingsWindowRequested
    signal sizeMayChange

    implicitHeight: column.implicitHeight
    implicitWidth: Theme.panelWidth

    Keys.onEscapePressed: root.closeRequested()
    onShowAdvancedChanged: root.sizeMayChange()
    onShowSettingsChanged: root.sizeMayChange()
    onShownChanged: {
        if (!shown)
            root.nowPlaying.dismissNotice();
    }

    Connections {
        function onShowNowPlayingChanged() {
            root.sizeMayChange();
        }

        target: root.settings
    }
    Connections {
        function onAutomaticChanged() {
            root.sizeMayChange();
        }

        target: root.nowPlaying
    }
    Binding {
        property: "accent"
        target: Theme
        value: root.settings.accent
    }
    Binding {
        property: "dark"
        target: Theme
        value: root.settings.dark
    }
    Item {
        id: rest
        focus: true
    }
    Shortcut {
        sequence: "Ctrl+,"

        onActivated: root.settingsWindowRequested()
    }
    // As large as the window, which may be on its way to another size.
    Rectangle {
        border.color: root.settings.hasPanelMaterial || root.framed ? "transparent" : Theme.border
        color: root.settings.hasPanelMaterial ? "transparent" : Theme.background
        height: root.Window.height
        radius: root.framed ? 0 : Theme.panelRadius
        width: root.width

        // A press outside the controls ends editing.
        TapHandler {
            onPressedChanged: {
                if (pressed)
                    rest.forceActiveFocus();
            }
        }
    }
    Column {
        id: column
        width: Theme.panelWidth

        TopBarView {
            accent: root.settings.accent
            devices: root.devices
            equalizer: root.equalizer
        }
        SectionDivider {
        }
        PresetStripView {
            accent: root.settings.accent
            nowPlaying: root.nowPlaying
            presets: root.presets
        }
        SectionDivider {
        }
        NowPlayingBar {
            accent: root.settings.accent
            nowPlaying: root.nowPlaying
            visible: root.settings.showNowPlaying
        }
        SectionDivider {
            visible: root.settings.showNowPlaying
        }
        QuickControlsView {
            accent: root.settings.accent
            equalizer: root.equalizer
        }
        SectionDivider {
            visible: root.showAdvanced
        }
        EQBandsView {
            accent: root.settings.accent
            bands: root.bands
            visible: root.showAdvanced
        }
        SectionDivider {
        }
        FooterView {
            id: footer
            presets: root.presets
            showAdvanced: root.showAdvanced
            showSettings: root.showSettings

            onAdvancedToggled: root.showAdvanced = !root.showAdvanced
            onSettingsToggled: root.showSettings = !root.showSettings
        }
        SectionDivider {
            visible: root.showSettings
        }
        SettingsPanel {
            id: settingsPanel
            accent: root.settings.accent
            settings: root.settings
            visible: root.showSettings

            onQuitRequested: root.quitRequested()
            onUnfoldedChanged: root.sizeMayChange()
        }
    }
}
