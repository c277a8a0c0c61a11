// A folder's files as a list, for imports.
import QtQuick
import Quillomat.Controls
import Quillomat.Theme

PickerFrame {
    id: root

    ListView {
        id: list
        anchors.fill: parent
        focus: true
        model: root.folder
        reuseItems: true
        keyNavigationEnabled: true
        activeFocusOnTab: true
        onCountChanged: if (currentIndex < 0 && count > 0) currentIndex = 0
        Accessible.role: Accessible.List
        Accessible.name: root.folder.folderName
        Keys.onReturnPressed: currentItem?.trigger()
        Keys.onEnterPressed: currentItem?.trigger()

        header: Pressable {
            visible: root.folder.canGoUp
            name: qsTr("Folder above")
            width: list.width
            height: visible ? Math.max(Theme.target, 3 * Theme.sizeBody) : 0
            onTriggered: root.folder.up()
            Row {
                anchors.verticalCenter: parent.verticalCenter
                x: Theme.margin
                spacing: Theme.gap
                Icon { name: "up"; size: 20; color: Theme.accent }
                Caption { text: qsTr("Folder above"); color: Theme.accent; lineHeight: 1 }
            }
        }
        delegate: Pressable {
            id: row
            required property int index
            required property string fileName
            required property string filePath
            required property bool isFolder

            width: list.width
            height: Math.max(Theme.target + Theme.step, 3 * Theme.sizeBody)
            name: fileName
            scrolls: true
            onTriggered: {
                list.currentIndex = index;
                if (isFolder)
                    root.folder.open(filePath);
                else
                    root.presentation.choose(filePath);
            }
            Row {
                anchors.verticalCenter: parent.verticalCenter
                x: Theme.margin
                spacing: Theme.gap
                Icon {
                    name: row.isFolder ? "folder" : "document"
                    size: 20
                    color: row.isFolder ? Theme.accent : Theme.secondaryText
                    anchors.verticalCenter: parent.verticalCenter
                }
                Caption {
                    width: row.width - 4 * Theme.margin
                    text: row.fileName
                    elide: Text.ElideMiddle
                    lineHeight: 1
                    anchors.verticalCenter: parent.verticalCenter
                }
            }
        }
    }
    EmptyNote {
        visible: !root.folder.loading && root.folder.count === 0
        icon: "folder"
        text: qsTr("Nothing here")
    }
}
