// The gallery of one row: a column of frames on the bare ground.
import QtQuick
import Quillomat.Controls
import Quillomat.Theme

ScreenPage {
    id: root

    ground: Theme.stage

    ListView {
        id: column
        readonly property real zoom: width / root.screen.pointsAcross
        // What stands in the middle stays there when the window changes its shape; in the core's points.
        property real middle: 0
        property bool isAtStart: true
        property bool isSettled: false
        function remember(): void {
            if (!isSettled)
                return;
            middle = (contentY - originY + height / 2) / zoom;
            isAtStart = contentY <= originY - topMargin + 1;
        }
        function unsettle(): void {
            isSettled = false;
            Qt.callLater(recall); // when all sizes have followed
        }
        function recall(): void {
            forceLayout();
            const top = originY - topMargin;
            const bottom = Math.max(top, originY + contentHeight + bottomMargin - height);
            contentY = isAtStart ? top : Math.max(top, Math.min(bottom, originY + middle * zoom - height / 2));
            isSettled = true;
        }

        anchors.top: parent.top
        anchors.bottom: parent.bottom
        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.min(parent.width, Theme.columnWidth)
        focus: true
        clip: true
        // Without an extent all frames would be within sight, and stay made.
        model: width > 0 && height > 0 ? root.screen.names : []
        reuseItems: true
        cacheBuffer: Math.max(0, 2 * height)
        spacing: root.screen.spacing * zoom
        topMargin: root.screen.margin * zoom
        bottomMargin: root.screen.margin * zoom
        keyNavigationEnabled: true
        activeFocusOnTab: true
        highlightMoveDuration: Theme.fade
        Accessible.role: Accessible.List
        Accessible.name: qsTr("Frames")
        Accessible.ignored: !enabled
        Component.onCompleted: unsettle()
        onContentYChanged: remember()
        onWidthChanged: unsettle()
        onHeightChanged: unsettle()
        Keys.onReturnPressed: if (currentIndex >= 0) root.screen.tap(currentIndex)
        Keys.onEnterPressed: if (currentIndex >= 0) root.screen.tap(currentIndex)

        delegate: Pressable {
            id: frame
            required property int index
            required property string modelData

            width: column.width
            height: root.screen.cellHeight * column.zoom
            name: modelData
            scrolls: true
            ringRadius: Theme.cardRadius
            onTriggered: {
                column.currentIndex = index;
                root.screen.tap(index);
            }
            FadingPicture {
                anchors.fill: parent
                source: root.screen.pictures[frame.index]
            }
        }
    }
}
