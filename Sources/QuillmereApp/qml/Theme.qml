pragma Singleton
import QtQuick
import QuillmereApp

// Colours, sizes and type of the whole window. Every pair of text and ground has a contrast of at least
// 4.5 : 1, every control and the ground it stands on 3 : 1.
QtObject {
    id: theme

    property bool dark: true
    property bool reducedMotion: false

    // Grounds
    readonly property color window: dark ? "#15161A" : "#F4F4F2"
    readonly property color card: dark ? "#1E2026" : "#FFFFFF"
    readonly property color line: dark ? "#2C2F38" : "#DDDDD8"
    readonly property color popup: dark ? "#262932" : "#FFFFFF"
    readonly property color shade: dark ? "#99000000" : "#66000000"

    // Text
    readonly property color text: dark ? "#ECEDEF" : "#1B1C1F"
    readonly property color secondary: dark ? "#A4AAB5" : "#5A5F69"
    readonly property color disabled: dark ? "#6B717D" : "#9A9EA6"

    // Controls
    readonly property color control: dark ? "#2A2D36" : "#F1F1EF"
    readonly property color controlHover: dark ? "#333741" : "#E8E8E5"
    readonly property color controlPressed: dark ? "#3B404C" : "#DEDEDA"
    readonly property color controlLine: dark ? "#737A88" : "#83888F"
    readonly property color field: dark ? "#17181D" : "#FFFFFF"
    readonly property color handle: dark ? "#D5D9E2" : "#5A5F69"
    readonly property color track: dark ? "#6E7583" : "#878C96"

    // The primary action, slider fill, focus ring and chart line
    readonly property color accent: dark ? "#8FA3FF" : "#3F54D9"
    readonly property color accentHover: dark ? "#A3B4FF" : "#3347C4"
    readonly property color accentPressed: dark ? "#7B90F0" : "#2A3CAB"
    readonly property color accentSoft: dark ? "#2B3150" : "#E6E9FC"
    readonly property color accentInk: dark ? "#10131F" : "#FFFFFF"

    // Only for what they say: ready; warnings; errors
    readonly property color good: dark ? "#5FD38D" : "#1C7A45"
    readonly property color warning: dark ? "#F2B84B" : "#8F5F00"
    readonly property color error: dark ? "#FF8A80" : "#B3261E"
    readonly property color errorSoft: dark ? "#3A2226" : "#FCECEA"
    readonly property color errorLine: dark ? "#7A3A3E" : "#E3A9A4"

    // Spacing in steps of 4
    readonly property int tight: 4
    readonly property int inner: 8
    readonly property int between: 12
    readonly property int outer: 16
    readonly property int cardRadius: 12
    readonly property int controlRadius: 8
    readonly property int controlHeight: 32

    // Type
    readonly property string family: Fonts.text
    readonly property string figures: Fonts.figures
    readonly property int textSize: 13
    readonly property int smallSize: 12
    readonly property int titleSize: 15

    // Milliseconds
    readonly property int quick: reducedMotion ? 0 : 100
    property int tipDelay: 600
    property int patience: 500  // before something short shows its progress
    property int calm: 400      // in which a command that has become another one takes no clicks
}
