// Colours, type, space and motion: what the whole window looks like, once.
pragma Singleton
import QtQuick
import Quillomat.Host

QtObject {
    id: root

    // Appearance
    readonly property SystemPalette systemPalette: SystemPalette {}
    readonly property bool dark: Shell.appearance === "dark"
        || (Shell.appearance === "auto" && systemPalette.window.hslLightness < 0.5)
    readonly property bool reducesMotion: Shell.reducesMotion

    // Colours
    readonly property color ground: dark ? "#121214" : "#F6F5F2"
    readonly property color stage: dark ? "#2B2B30" : ground // dark frames must stand out from it
    readonly property color card: dark ? "#1C1C1F" : "#FFFFFF"
    readonly property color cardPressed: dark ? "#26262A" : "#F0EFEB"
    readonly property color raised: dark ? "#242428" : "#FFFFFF"
    readonly property color text: dark ? "#F2F1EE" : "#1B1B1D"
    readonly property color secondaryText: dark ? "#A6A6A4" : "#626262"
    readonly property color accent: dark ? "#3EC6BE" : "#0B7A75"
    readonly property color inkOnAccent: dark ? "#0B1A19" : "#FFFFFF"
    readonly property color hairline: dark ? "#2C2C30" : "#E4E2DC"
    readonly property color wellTop: dark ? "#2B2B30" : "#F4F2EE"
    readonly property color wellBottom: dark ? "#202024" : "#E6E2DA"
    readonly property color checkLight: dark ? "#333339" : "#F6F4F1"
    readonly property color checkDark: dark ? "#2B2B30" : "#E8E5DF"
    readonly property color scrim: dark ? "#99000000" : "#66121214"
    readonly property color cropScrim: "#B3000000"
    readonly property color shade: dark ? "#66000000" : "#1F2A2620"
    readonly property color black: "#000000"
    readonly property color white: "#FFFFFF"
    readonly property color clear: "transparent"
    readonly property real disabledOpacity: 0.35

    // Type
    readonly property real scale: Shell.textScale
    readonly property string family: Qt.application.font.family
    readonly property real sizeTiny: 11 * scale
    readonly property real sizeSmall: 13 * scale
    readonly property real sizeBody: 15 * scale
    readonly property real sizeTitle: 17 * scale
    readonly property real sizeLarge: 22 * scale
    readonly property real sizeHuge: 28 * scale
    readonly property real lineHeight: 1.3

    // Space
    readonly property real step: 4
    readonly property real gap: 12
    readonly property real margin: 16
    readonly property real target: 44
    readonly property real edge: 20 // where a finger comes in to go back
    readonly property real cardRadius: 20
    readonly property real wellRadius: 16
    readonly property real smallRadius: 10
    readonly property real barHeight: Math.max(52, Math.ceil(sizeTitle * 1.5 + 4 * step))
    readonly property real toolHeight: Math.ceil(46 + 2 * sizeTiny)
    readonly property real toolWidth: 88
    readonly property real lowWindow: 520 // tools stand beside the picture below this height
    readonly property real columnWidth: 480
    readonly property real alertWidth: 270
    readonly property real sheetWidth: 400
    readonly property real iconSize: 26
    readonly property real iconStroke: 1.5
    readonly property real previewSide: 95
    readonly property real thumbnailSide: 116

    // Motion
    readonly property int duration: reducesMotion ? 120 : 220
    readonly property int fade: 120
    readonly property int easing: Easing.OutCubic
    readonly property real pressedScale: reducesMotion ? 1 : 0.98
}
