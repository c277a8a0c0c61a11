// Actions that rise from the bottom edge; the one that only leaves stands apart.
import QtQuick
import Quillomat.Theme

Question {
    id: root

    required property QtObject presentation
    property real shown: 0 // 0 below the edge, 1 in place
    readonly property int cancelIndex: {
        const actions = presentation.actions;
        for (let i = 0; i < actions.length; ++i)
            if (actions[i].isCancel)
                return i;
        return -1;
    }

    function turnAway(): void {
        if (cancelIndex >= 0)
            presentation.answer(cancelIndex);
    }

    Accessible.role: Accessible.Dialog
    Accessible.name: presentation.title
    Keys.onEscapePressed: turnAway()
    Keys.onBackPressed: turnAway()

    Scrim {
        opacity: root.shown
        onTapped: root.turnAway()
    }
    Column {
        id: column
        width: Math.min(parent.width - 2 * Theme.gap, Theme.sheetWidth * Math.max(1, Theme.scale))
        anchors.horizontalCenter: parent.horizontalCenter
        y: parent.height - (height + Theme.gap) * (Theme.reducesMotion ? 1 : root.shown)
        opacity: Theme.reducesMotion ? root.shown : 1
        spacing: 2 * Theme.step

        Rectangle {
            width: parent.width
            height: Math.min(list.height, root.height - cancelCard.height - 2 * Theme.gap - column.spacing)
            radius: Theme.cardRadius
            color: Theme.raised
            Lift {}

            Flickable {
                id: scroll
                anchors.fill: parent
                contentHeight: list.height
                clip: contentHeight > height
                boundsBehavior: Flickable.StopAtBounds
                interactive: contentHeight > height

                function reveal(item: Item): void {
                    contentY = Math.max(Math.min(contentY, item.y), item.y + item.height - height);
                }

                Column {
                    id: list
                    width: scroll.width
                    topPadding: Theme.margin
                    bottomPadding: Theme.step

                    Caption {
                        width: parent.width
                        horizontalAlignment: Text.AlignHCenter
                        text: root.presentation.title
                        size: Theme.sizeSmall
                        color: Theme.secondaryText
                        strong: true
                        bottomPadding: 2 * Theme.step
                    }
                    Caption {
                        visible: text !== ""
                        width: parent.width - 2 * Theme.margin
                        x: Theme.margin
                        horizontalAlignment: Text.AlignHCenter
                        wrapMode: Text.WordWrap
                        text: root.presentation.message
                        size: Theme.sizeSmall
                        color: Theme.secondaryText
                        bottomPadding: 2 * Theme.step
                    }
                    Repeater {
                        model: root.presentation.actions
                        ActionRow {
                            required property var modelData
                            required property int index
                            visible: !modelData.isCancel
                            height: visible ? implicitHeight : 0
                            width: list.width
                            name: modelData.title
                            onTriggered: root.presentation.answer(index)
                            onActiveFocusChanged: if (activeFocus) scroll.reveal(this)
                            Rectangle {
                                width: parent.width - 2 * Theme.margin
                                x: Theme.margin
                                height: 1
                                color: Theme.hairline
                            }
                        }
                    }
                }
            }
        }
        Rectangle {
            id: cancelCard
            visible: root.cancelIndex >= 0
            width: parent.width
            height: visible ? cancel.implicitHeight + 2 * Theme.step : 0
            radius: Theme.cardRadius
            color: Theme.raised
            Lift {}
            ActionRow {
                id: cancel
                anchors.fill: parent
                strong: true
                focus: true
                ringRadius: Theme.cardRadius - Theme.step
                name: root.cancelIndex >= 0 ? root.presentation.actions[root.cancelIndex].title : ""
                onTriggered: root.turnAway()
            }
        }
    }
}
