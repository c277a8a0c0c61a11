// The catalogue: a column of rows.
import QtQuick
import Quillomat.Controls
import Quillomat.Theme

ScreenPage {
    id: root

    ListView {
        id: list
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.min(parent.width, Theme.columnWidth)
        topMargin: Theme.step
        bottomMargin: Theme.margin
        focus: true
        clip: true
        model: root.screen.rows
        reuseItems: true
        cacheBuffer: 4 * root.screen.rows.rowHeight
        boundsBehavior: Flickable.DragAndOvershootBounds
        keyNavigationEnabled: true
        activeFocusOnTab: true
        highlightMoveDuration: Theme.fade
        Accessible.role: Accessible.List
        Accessible.ignored: !enabled
        Accessible.name: root.screen.title
        Keys.onReturnPressed: if (currentIndex >= 0) root.screen.select(currentIndex)
        Keys.onEnterPressed: if (currentIndex >= 0) root.screen.select(currentIndex)

        delegate: CatalogueRow {
            width: list.width
            height: Math.max(root.screen.rows.rowHeight, implicitHeight)
            onTriggered: {
                list.currentIndex = index;
                root.screen.select(index);
            }
        }
    }
}
