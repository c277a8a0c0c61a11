// What stands where there is nothing to show: a quiet picture and a line of text.
import QtQuick
import Quillomat.Theme

Column {
    id: root

    property alias icon: picture.name
    property alias text: words.text

    anchors.centerIn: parent
    width: Math.min(parent.width - 4 * Theme.margin, Theme.sheetWidth - 4 * Theme.margin)
    spacing: Theme.gap
    Accessible.role: Accessible.StaticText
    Accessible.name: words.text

    Rectangle {
        anchors.horizontalCenter: parent.horizontalCenter
        width: 2 * Theme.target
        height: width
        radius: width / 2
        color: Theme.wellTop
        Icon {
            id: picture
            anchors.centerIn: parent
            size: 36
            color: Theme.secondaryText
        }
    }
    Caption {
        id: words
        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.WordWrap
        color: Theme.secondaryText
    }
}
