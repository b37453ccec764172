import Halvo

SettingsForm {
    text: qsTr("Driver install/uninstall, diagnostics")
}
