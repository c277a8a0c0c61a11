// A tool of the editor's bar: a line icon over a small label.
import QtQuick
import Quillomat.Theme

Pressable {
    id: root

    property string label: name
    property string icon: ""
    property bool prominent: false
    property bool toggles: false
    property bool on: false
    readonly property color ink: prominent || on ? Theme.accent : Theme.text

    implicitHeight: Theme.toolHeight
    ringRadius: Theme.wellRadius

    Accessible.checkable: toggles
    Accessible.checked: on

    Rectangle {
        anchors.fill: parent
        anchors.margins: Theme.step / 2
        radius: Theme.wellRadius
        color: root.pressed ? Theme.cardPressed : root.hovered ? Theme.card : Theme.clear
        Behavior on color { ColorAnimation { duration: Theme.fade } }
    }
    Icon {
        id: picture
        name: root.icon
        color: root.ink
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.top: parent.top
        anchors.topMargin: Math.max(Theme.step, (parent.height - height - words.height - 1.5 * Theme.step) / 2)
    }
    Caption {
        id: words
        text: root.label
        fontSizeMode: Text.HorizontalFit
        minimumPixelSize: 9
        size: Theme.sizeTiny
        color: root.ink
        strong: root.prominent
        lineHeight: 1
        width: parent.width - Theme.step
        anchors.horizontalCenter: parent.horizontalCenter
        horizontalAlignment: Text.AlignHCenter
        anchors.top: picture.bottom
        anchors.topMargin: 1.5 * Theme.step
    }
}
