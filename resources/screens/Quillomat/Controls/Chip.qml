// A small label with ground of its own.
import QtQuick
import Quillomat.Theme

Rectangle {
    id: root
    property alias text: caption.text

    visible: text !== ""
    implicitWidth: caption.implicitWidth + 4 * Theme.step
    implicitHeight: caption.implicitHeight + Theme.step
    radius: height / 2
    color: Theme.wellTop

    Caption {
        id: caption
        anchors.centerIn: parent
        size: Theme.sizeTiny
        lineHeight: 1.1
        color: Theme.secondaryText
    }
}
