import Halvo

SettingsForm {
    text: qsTr("Rules editor: Output Device → Preset, Main App → Preset")
}
