// The editing step of a background: move and zoom the picture under a window of the canvas's shape.
import QtQuick
import Quillomat.Controls
import Quillomat.Theme

FocusScope {
    id: root

    required property QtObject presentation
    readonly property QtObject crop: presentation.crop
    // Without height to spare the buttons stand in the bar.
    readonly property bool isLow: width > height && height < Theme.lowWindow

    anchors.fill: parent
    Accessible.role: Accessible.Dialog
    Accessible.name: qsTr("Move and zoom")
    Keys.onEscapePressed: presentation.cancelCrop()
    Keys.onBackPressed: presentation.cancelCrop()
    Keys.onReturnPressed: presentation.finishCrop()
    Keys.onEnterPressed: presentation.finishCrop()
    Keys.onLeftPressed: crop.move(0.02, 0)
    Keys.onRightPressed: crop.move(-0.02, 0)
    Keys.onUpPressed: crop.move(0, 0.02)
    Keys.onDownPressed: crop.move(0, -0.02)
    Keys.onPressed: event => {
        if (event.key === Qt.Key_Plus || event.key === Qt.Key_Equal)
            crop.zoom(1.1);
        else if (event.key === Qt.Key_Minus)
            crop.zoom(1 / 1.1);
        else
            return;
        event.accepted = true;
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.black
        MouseArea { anchors.fill: parent; hoverEnabled: true }
    }
    Item {
        id: room
        anchors.fill: parent
        anchors.topMargin: Theme.barHeight
        anchors.bottomMargin: root.isLow ? 0 : Theme.barHeight + 2 * Theme.margin
        clip: true

        Item {
            id: hole
            objectName: "cropWindow"
            Accessible.role: Accessible.Graphic
            Accessible.name: qsTr("Part of the picture")
            Accessible.description: root.crop ? root.crop.description : ""
            readonly property real shape: root.crop ? root.crop.shape : 1
            width: Math.round(Math.min(room.width - 2 * Theme.margin, (room.height - 2 * Theme.margin) * shape))
            height: Math.round(width / shape)
            anchors.centerIn: parent

            Image {
                readonly property rect part: root.crop ? root.crop.part : Qt.rect(0, 0, 1, 1)
                x: -part.x * width
                y: -part.y * height
                width: hole.width / part.width
                height: hole.height / part.height
                asynchronous: true
                cache: false
                smooth: true
                mipmap: true
                source: root.crop ? root.crop.source : ""
                sourceSize: Qt.size(2048, 2048)
                Accessible.ignored: true
            }
            Rectangle {
                anchors.fill: parent
                color: Theme.clear
                border.width: 2
                border.color: Theme.white
            }
        }
        Rectangle { color: Theme.cropScrim; width: parent.width; height: hole.y }
        Rectangle { color: Theme.cropScrim; width: parent.width; y: hole.y + hole.height; height: parent.height - y }
        Rectangle { color: Theme.cropScrim; x: 0; y: hole.y; width: hole.x; height: hole.height }
        Rectangle {
            color: Theme.cropScrim
            x: hole.x + hole.width
            y: hole.y
            width: parent.width - x
            height: hole.height
        }
        DragHandler {
            id: drag
            target: null
            property point last
            onActiveChanged: last = Qt.point(0, 0)
            onTranslationChanged: {
                if (!active)
                    return;
                root.crop.move((translation.x - last.x) / hole.width, (translation.y - last.y) / hole.height);
                last = Qt.point(translation.x, translation.y);
            }
        }
        PinchHandler {
            target: null
            property real last: 1
            property point held
            function follow(): void {
                const now = hole.mapFromItem(room, centroid.position.x, centroid.position.y);
                root.crop.move((now.x - held.x) / hole.width, (now.y - held.y) / hole.height);
                root.crop.zoom(activeScale / last, now.x / hole.width, now.y / hole.height);
                held = now;
                last = activeScale;
            }
            onActiveChanged: {
                last = activeScale;
                held = hole.mapFromItem(room, centroid.position.x, centroid.position.y);
            }
            onUpdated: if (active) follow()
        }
        WheelHandler {
            acceptedDevices: PointerDevice.AllDevices
            onWheel: event => {
                const point = hole.mapFromItem(room, event.x, event.y);
                root.crop.zoom(Math.pow(1.1, event.angleDelta.y / 120), point.x / hole.width, point.y / hole.height);
            }
        }
    }
    Caption {
        anchors.horizontalCenter: parent.horizontalCenter
        y: (Theme.barHeight - height) / 2
        text: qsTr("Move and zoom")
        color: Theme.white
        size: Theme.sizeTitle
        strong: true
        lineHeight: 1
    }
    BarButton {
        name: qsTr("Cancel")
        fontSize: 15
        anchors.left: parent.left
        anchors.leftMargin: Theme.margin
        y: root.isLow ? (Theme.barHeight - height) / 2 : parent.height - height - Theme.margin
        onTriggered: root.presentation.cancelCrop()
    }
    BarButton {
        name: qsTr("Choose")
        fontSize: 15
        focus: true
        anchors.right: parent.right
        anchors.rightMargin: Theme.margin
        y: root.isLow ? (Theme.barHeight - height) / 2 : parent.height - height - Theme.margin
        onTriggered: root.presentation.finishCrop()
    }
}
