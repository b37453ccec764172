import Halvo

SettingsForm {
    text: qsTr("General settings")
}
