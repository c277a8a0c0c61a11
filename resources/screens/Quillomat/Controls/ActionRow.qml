// One action of an alert or a sheet.
import QtQuick
import Quillomat.Theme

Pressable {
    id: root

    property bool strong: false
    property real size: Theme.sizeTitle

    implicitHeight: Math.max(Theme.target + 2 * Theme.step, caption.implicitHeight + 4 * Theme.step)
    implicitWidth: Math.ceil(caption.implicitWidth) + 2 * Theme.margin
    sinks: false
    ringRadius: Theme.smallRadius + Theme.step
    ringX: Theme.step
    ringY: Theme.step

    Rectangle {
        anchors.fill: parent
        anchors.margins: Theme.step
        radius: Theme.smallRadius + Theme.step
        color: root.pressed || root.hovered ? Theme.cardPressed : Theme.clear
        Behavior on color { ColorAnimation { duration: Theme.fade } }
    }
    Caption {
        id: caption
        anchors.centerIn: parent
        width: Math.min(implicitWidth, parent.width - 2 * Theme.gap)
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.WordWrap
        maximumLineCount: 2
        text: root.name
        color: Theme.accent
        size: root.size
        strong: root.strong
        lineHeight: 1
    }
}
