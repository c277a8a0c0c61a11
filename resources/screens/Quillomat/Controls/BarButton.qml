// A button of the navigation bar: bold text, in the size that the core gives.
import QtQuick
import Quillomat.Theme

Pressable {
    id: root

    property real fontSize: 12

    visible: name !== ""
    available: name !== ""
    implicitWidth: Math.max(Theme.target, Math.ceil(caption.implicitWidth) + 2 * Theme.gap)
    ringRadius: height / 2

    Rectangle {
        anchors.centerIn: parent
        width: parent.width
        height: caption.implicitHeight + 3 * Theme.step
        radius: height / 2
        color: root.pressed || root.hovered ? Theme.cardPressed : Theme.card
        Behavior on color { ColorAnimation { duration: Theme.fade } }
    }
    Caption {
        id: caption
        anchors.centerIn: parent
        width: Math.min(implicitWidth, parent.width - 2 * Theme.gap)
        text: root.name
        color: Theme.accent
        size: root.fontSize * Theme.scale
        weight: Font.Bold
        lineHeight: 1
    }
}
