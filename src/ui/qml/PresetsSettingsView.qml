import Halvo

SettingsForm {
    text: qsTr("Manage presets: rename, reorder, import/export")
}
