// The pictures folder as a grid, newest first; for backgrounds followed by the editing step.
import QtQuick
import Quillomat.Controls
import Quillomat.Theme

FocusScope {
    id: root

    required property QtObject presentation
    property real shown: 0

    anchors.fill: parent

    PickerFrame {
        id: picker
        presentation: root.presentation
        shown: root.shown
        focus: !root.presentation.crop
        visible: !root.presentation.crop || root.presentation.isLeaving
        nameFilters: [qsTr("Pictures (*.png *.jpg *.jpeg *.webp *.heic *.heif *.avif)"), qsTr("All files (*)")]

        GridView {
            id: grid
            readonly property int columns: Math.max(3, Math.floor((width - Theme.step) / Theme.thumbnailSide))

            anchors.fill: parent
            anchors.leftMargin: Theme.step
            focus: true
            model: picker.folder
            cellWidth: Math.floor(width / columns)
            cellHeight: cellWidth
            reuseItems: true
            cacheBuffer: Math.max(0, height)
            keyNavigationEnabled: true
            activeFocusOnTab: true
            onCountChanged: if (currentIndex < 0 && count > 0) currentIndex = 0
            Accessible.role: Accessible.List
            Accessible.name: picker.folder.folderName
            Keys.onReturnPressed: currentItem?.trigger()
            Keys.onEnterPressed: currentItem?.trigger()
            Keys.onSpacePressed: currentItem?.trigger()

            header: Pressable {
                visible: picker.folder.canGoUp
                name: qsTr("Folder above")
                width: grid.width
                height: visible ? Math.max(Theme.target, 3 * Theme.sizeSmall) : 0
                ringRadius: Theme.smallRadius
                onTriggered: picker.folder.up()
                Row {
                    anchors.verticalCenter: parent.verticalCenter
                    x: Theme.gap
                    spacing: 2 * Theme.step
                    Icon { name: "up"; size: 18; color: Theme.accent }
                    Caption { text: qsTr("Folder above"); size: Theme.sizeSmall; color: Theme.accent; lineHeight: 1 }
                }
            }
            delegate: PhotoCell {
                width: grid.cellWidth
                height: grid.cellHeight
                onTriggered: {
                    grid.currentIndex = index;
                    if (isFolder)
                        picker.folder.open(filePath);
                    else
                        root.presentation.choose(filePath);
                }
            }
        }
        EmptyNote {
            visible: !picker.folder.loading && picker.folder.count === 0
            icon: "background"
            text: qsTr("No pictures here yet. Browse for a file, drop one on the window, or paste one.")
        }
    }
    Loader {
        anchors.fill: parent
        active: root.presentation.crop !== null && root.presentation.crop !== undefined
        opacity: root.presentation.isLeaving ? root.shown : 1
        focus: active
        sourceComponent: Component { CropStep { presentation: root.presentation } }
        onLoaded: item.forceActiveFocus()
    }
}
