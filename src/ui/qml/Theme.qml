pragma Singleton
import QtQuick
import Halvo

// The panel's colours, sizes and fonts. The owner of the views sets `dark` and `accent`.
QtObject {
    property color accent: "#007AFF"

    // A default animation.
    readonly property int animation: 200
    readonly property color background: dark ? "#2B2B2E" : "#EDEDEF"
    readonly property color border: dark ? "#4B4B50" : "#C4C4C8"
    property bool dark: false
    readonly property color divider: dark ? "#404044" : "#D6D6DA"
    readonly property color faint: dark ? "#77777E" : "#97979D"
    readonly property color field: dark ? "#3B3B40" : "#FFFFFF"
    readonly property color fieldBorder: dark ? "#55555B" : "#CBCBD0"
    readonly property string fontFamily: "Inter"
    readonly property int fontSize: 12
    readonly property color hovered: dark ? "#505056" : "#CDCDD2"
    readonly property color knob: "#FFFFFF"
    readonly property color knobBorder: dark ? "#2E2E31" : "#B4B4BA"
    readonly property color knobPressed: "#E6E6EA"
    readonly property int margin: 12
    readonly property color menu: dark ? "#343438" : "#F8F8FA"
    readonly property color negative: dark ? "#FF9F0A" : "#FF9500"
    readonly property color neutral: Qt.alpha(secondary, 0.4)
    readonly property int panelRadius: 10
    readonly property int panelWidth: 320
    readonly property color pill: dark ? "#434348" : "#D9D9DD"
    readonly property color primary: dark ? "#F2F2F5" : "#161618"
    readonly property color secondary: dark ? "#A2A2A9" : "#67676D"
    readonly property color spectrum: dark ? "#30D158" : "#34C759"
    readonly property color track: dark ? "#4C4C52" : "#CFCFD4"

    function brightness(fill: color): real {
        return 0.2126 * fill.r + 0.7152 * fill.g + 0.0722 * fill.b;
    }
    // The outline of a coloured shape, visible only where the shape has too little contrast with the panel.
    function edgeOf(fill: color): color {
        return fades(fill) ? Qt.tint(fill, Qt.alpha(primary, 0.35)) : fill;
    }
    function fades(fill: color): bool {
        return dark ? brightness(fill) < 0.25 : brightness(fill) > 0.75;
    }
    // For text and lines in a colour: the plain text colour where the contrast is too low.
    function lineOf(fill: color): color {
        return fades(fill) ? primary : fill;
    }
    // The text colour that is readable on a colour.
    function textOn(fill: color): color {
        return Display.isLight(fill) ? "#000000" : "#FFFFFF";
    }
}
