// One picture or folder of the grid.
import QtQuick
import Quillomat.Controls
import Quillomat.Theme

Pressable {
    id: root

    required property int index
    required property string fileName
    required property string filePath
    required property bool isFolder
    required property string thumbnail

    name: fileName
    scrolls: true
    ringRadius: Theme.smallRadius / 2 + 1

    Rectangle {
        anchors.fill: parent
        anchors.margins: Theme.step / 2
        radius: Theme.smallRadius / 2
        color: Theme.wellTop

        FadingPicture {
            anchors.fill: parent
            visible: !root.isFolder
            fillMode: Image.PreserveAspectCrop
            source: root.thumbnail
        }
        Column {
            visible: root.isFolder
            anchors.centerIn: parent
            width: parent.width - 2 * Theme.gap
            spacing: Theme.step
            Icon {
                name: "folder"
                size: 32
                color: Theme.accent
                anchors.horizontalCenter: parent.horizontalCenter
            }
            Caption {
                width: parent.width
                horizontalAlignment: Text.AlignHCenter
                text: root.fileName
                size: Theme.sizeTiny
                elide: Text.ElideMiddle
            }
        }
    }
}
