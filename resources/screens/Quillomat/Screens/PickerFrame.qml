// What both pickers share: a page that rises from below, with Cancel, the folder's name and the way out to the
// system's dialogue; drops and pastes count as picks.
import QtQuick
import QtQuick.Dialogs
import Quillomat.Controls
import Quillomat.Theme

FocusScope {
    id: root

    required property QtObject presentation
    property real shown: 0
    property var nameFilters: []
    readonly property QtObject folder: presentation.folder
    default property alias content: body.data

    anchors.fill: parent
    Accessible.role: Accessible.Dialog
    Accessible.name: root.folder.folderName
    Keys.onEscapePressed: root.presentation.cancel()
    Keys.onBackPressed: root.presentation.cancel()

    Scrim { opacity: root.shown }
    Rectangle {
        id: page
        readonly property bool isCard: parent.width > 700 && parent.height >= Theme.lowWindow
        width: isCard ? 640 : parent.width
        height: isCard ? Math.min(parent.height - 4 * Theme.margin, 960) : parent.height
        x: Math.round((parent.width - width) / 2)
        y: (parent.height - height) / 2 + (Theme.reducesMotion ? 0 : (1 - root.shown) * parent.height)
        opacity: Theme.reducesMotion ? root.shown : 1
        radius: isCard ? Theme.cardRadius : 0
        color: Theme.ground
        Lift { visible: page.isCard }

        Item {
            id: header
            width: parent.width
            height: Theme.barHeight
            BarButton {
                id: cancel
                name: qsTr("Cancel")
                fontSize: 13
                anchors.left: parent.left
                anchors.leftMargin: Theme.gap
                anchors.verticalCenter: parent.verticalCenter
                onTriggered: root.presentation.cancel()
            }
            Caption {
                readonly property real from: cancel.x + cancel.width + Theme.gap
                readonly property real to: browse.x - Theme.gap
                width: Math.max(0, Math.min(Math.ceil(implicitWidth), to - from))
                visible: width > 2 * size
                x: Math.round(Math.max(from, Math.min((parent.width - width) / 2, to - width)))
                anchors.verticalCenter: parent.verticalCenter
                horizontalAlignment: Text.AlignHCenter
                text: root.folder.folderName
                size: Theme.sizeTitle
                strong: true
                lineHeight: 1
            }
            BarButton {
                id: browse
                name: qsTr("Browse files")
                width: Math.min(implicitWidth, parent.width - cancel.width - 3 * Theme.gap)
                fontSize: 13
                anchors.right: parent.right
                anchors.rightMargin: Theme.gap
                anchors.verticalCenter: parent.verticalCenter
                onTriggered: {
                    dialog.active = true;
                    dialog.item.open();
                }
            }
        }
        Item {
            id: body
            anchors.top: header.bottom
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            anchors.bottomMargin: page.radius / 2
            clip: true
        }
        Rectangle {
            visible: root.presentation.trouble !== ""
            width: Math.min(parent.width - 2 * Theme.margin, trouble.implicitWidth + 2 * Theme.margin)
            height: Math.max(Theme.target, trouble.implicitHeight + 4 * Theme.step)
            radius: height / 2
            anchors.horizontalCenter: parent.horizontalCenter
            anchors.bottom: parent.bottom
            anchors.bottomMargin: Theme.margin
            color: Theme.raised
            Accessible.role: Accessible.AlertMessage
            Accessible.name: trouble.text
            Lift { radius: parent.radius }
            Caption {
                id: trouble
                anchors.centerIn: parent
                width: Math.min(implicitWidth, parent.width - 2 * Theme.margin)
                text: root.presentation.trouble
                size: Theme.sizeSmall
                lineHeight: 1
            }
        }
    }
    DropArea {
        anchors.fill: parent
        onDropped: drop => {
            const format = root.presentation.pictureFormat(drop.formats);
            if (drop.hasUrls && drop.urls[0].toString().startsWith("file:")) {
                drop.accept();
                root.presentation.chooseUrl(drop.urls[0]);
            } else if (format !== "") {
                drop.accept();
                root.presentation.chooseData(drop.getDataAsArrayBuffer(format));
            }
        }
    }
    Shortcut {
        sequences: [StandardKey.Paste]
        onActivated: root.presentation.paste()
    }
    Loader {
        id: dialog
        active: false
        sourceComponent: Component {
            FileDialog {
                nameFilters: root.nameFilters
                currentFolder: "file://" + encodeURI(root.folder.folder)
                onAccepted: root.presentation.chooseUrl(selectedFile)
            }
        }
    }
}
