pragma Singleton
import QtQuick
import Marlet

/// Every colour, space and size of text. Two palettes of the same roles; contrast is checked by a
/// test over both.
QtObject {
    id: theme

    readonly property bool dark: App.desktop.dark
    /// Rows begin at the right, as the language is read.
    readonly property bool mirrored: App.desktop.mirrored

    readonly property color window: dark ? "#1C1D1F" : "#F6F6F4"
    readonly property color card: dark ? "#242628" : "#FFFFFF"
    readonly property color raised: dark ? "#2C2F31" : "#FFFFFF"
    readonly property color ink: dark ? "#ECEDEE" : "#1B1D1F"
    readonly property color quiet: dark ? "#A6ACB2" : "#5C6166"
    readonly property color disabled: dark ? "#6B7177" : "#9AA0A6"
    readonly property color accent: dark ? "#4FB7BA" : "#0B6E72"
    readonly property color accentInk: dark ? "#10201F" : "#FFFFFF"
    readonly property color ready: dark ? "#6CC08B" : "#2E7D4F"
    readonly property color look: dark ? "#E3B341" : "#946200"
    readonly property color failed: dark ? "#F2857C" : "#B3261E"
    readonly property color hairline: tint(ink, 0.12)
    readonly property color hover: tint(ink, 0.04)
    readonly property color selected: tint(accent, 0.14)
    readonly property color shade: Qt.rgba(0, 0, 0, dark ? 0.5 : 0.32)
    /// The words of a passing message, whose ground is the ink of the light palette.
    readonly property color toastInk: dark ? ink : "#FFFFFF"
    readonly property color knob: "#FFFFFF"
    readonly property color segmentOn: dark ? "#43474A" : card
    /// Over a picture, and the words there: the same in both palettes.
    readonly property color veil: Qt.rgba(0, 0, 0, 0.66)
    readonly property color veilInk: "#FFFFFF"

    readonly property int s1: 4
    readonly property int s2: 8
    readonly property int s3: 12
    readonly property int s4: 16
    readonly property int s6: 24
    readonly property int radius: 8
    readonly property int posterRadius: 4

    readonly property string family: App.desktop.family
    readonly property int body: px(13)
    readonly property int small: px(12)
    readonly property int rowTitle: px(15)
    readonly property int pageTitle: px(20)
    readonly property int control: px(32)
    readonly property int motion: App.desktop.reducedMotion ? 0 : 120

    function tint(base: color, alpha: real): color {
        return Qt.rgba(base.r, base.g, base.b, alpha);
    }
    /// Follows the system's size of text.
    function px(size: real): int {
        return Math.round(size * App.desktop.textScale);
    }
}
