// One action of an alert or a sheet.
import QtQuick
import Quillomat.Theme

Pressable {
    id: root

    property bool strong: false
    property real size: Theme.sizeTitle

    implicitHeight: Math.max(Theme.target + 2 * Theme.step, caption.implicitHeight + 4 * Theme.step)
    implicitWidth: caption.implicitWidth + 2 * Theme.margin
    sinks: false

    Rectangle {
        anchors.fill: parent
        anchors.margins: Theme.step
        radius: Theme.smallRadius + Theme.step
        color: root.pressed ? Theme.cardPressed : Theme.clear
    }
    Caption {
        id: caption
        anchors.centerIn: parent
        width: Math.min(implicitWidth, parent.width - 2 * Theme.gap)
        text: root.name
        color: Theme.accent
        size: root.size
        strong: root.strong
        lineHeight: 1
    }
}
