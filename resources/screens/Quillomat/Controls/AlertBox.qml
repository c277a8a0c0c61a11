// An alert: a title, a message, perhaps a field, and its actions, side by side when two are short.
import QtQuick
import Quillomat.Theme

Question {
    id: root

    required property QtObject presentation
    property real shown: 0
    readonly property int count: presentation.actions.length
    sideKeys: !presentation.asksForText
    readonly property bool sideBySide: count === 2 && row.widest <= (box.width - Theme.margin) / 2

    function turnAway(): void {
        if (count === 1)
            presentation.answer(0, field.text);
    }

    Accessible.role: Accessible.AlertMessage
    Accessible.name: presentation.title
    Accessible.description: presentation.message
    Keys.onEscapePressed: turnAway()
    Keys.onBackPressed: turnAway()

    Scrim { opacity: root.shown }
    Rectangle {
        id: box
        width: Math.min(Theme.alertWidth * Math.max(1, Math.min(Theme.scale, 1.4)), parent.width - 2 * Theme.margin)
        height: Math.min(content.height, parent.height - 2 * Theme.gap)
        x: Math.round((parent.width - width) / 2)
        y: Math.round((parent.height - height) / 2)
        radius: Theme.cardRadius
        color: Theme.raised
        opacity: root.shown
        scale: Theme.reducesMotion ? 1 : 0.92 + 0.08 * root.shown

        Lift {}

        Flickable {
            id: scroll
            anchors.fill: parent
            contentHeight: content.height
            clip: contentHeight > height
            boundsBehavior: Flickable.StopAtBounds
            interactive: contentHeight > height

            Column {
                id: content
                width: scroll.width
                topPadding: Theme.cardRadius

                Caption {
                    width: parent.width - 2 * Theme.margin
                    x: Theme.margin
                    text: root.presentation.title
                    size: Theme.sizeTitle
                    strong: true
                    horizontalAlignment: Text.AlignHCenter
                    wrapMode: Text.WordWrap
                }
                Caption {
                    visible: text !== ""
                    width: parent.width - 2 * Theme.margin
                    x: Theme.margin
                    topPadding: Theme.step
                    text: root.presentation.message.trim()
                    size: Theme.sizeSmall
                    horizontalAlignment: Text.AlignHCenter
                    wrapMode: Text.Wrap
                    Accessible.ignored: false
                    Accessible.role: Accessible.StaticText
                    Accessible.name: text
                }
                Rectangle {
                    visible: root.presentation.asksForText
                    width: parent.width - 2 * Theme.margin
                    height: visible ? Theme.target : 0
                    x: Theme.margin
                    radius: Theme.smallRadius
                    color: Theme.ground
                    border.width: field.activeFocus ? 2 : 1
                    border.color: field.activeFocus ? Theme.accent : Theme.hairline
                    TextInput {
                        id: field
                        objectName: "field"
                        anchors.fill: parent
                        anchors.leftMargin: Theme.gap
                        anchors.rightMargin: Theme.gap
                        verticalAlignment: TextInput.AlignVCenter
                        focus: root.presentation.asksForText
                        color: Theme.text
                        selectionColor: Theme.accent
                        selectedTextColor: Theme.inkOnAccent
                        font.family: Theme.family
                        font.pixelSize: Theme.sizeBody
                        inputMethodHints: Qt.ImhFormattedNumbersOnly
                        selectByMouse: true
                        clip: true
                        Accessible.name: root.presentation.message
                        onAccepted: root.presentation.answer(root.count - 1, text)
                    }
                }
                Item { width: 1; height: Theme.gap }
                Rectangle {
                    width: parent.width
                    height: 1
                    color: Theme.hairline
                }
                Grid {
                    id: row
                    property real widest: 0
                    width: parent.width
                    columns: root.sideBySide ? 2 : 1
                    Repeater {
                        model: root.presentation.actions
                        ActionRow {
                            required property var modelData
                            required property int index
                            width: root.sideBySide ? box.width / 2 : box.width
                            name: modelData.title
                            strong: index === root.count - 1
                            focus: !root.presentation.asksForText && index === root.count - 1
                            onTriggered: root.presentation.answer(index, field.text)
                            onActiveFocusChanged: {
                                if (activeFocus)
                                    scroll.contentY = Math.max(0, scroll.contentHeight - scroll.height);
                            }
                            Component.onCompleted: row.widest = Math.max(row.widest, implicitWidth)
                        }
                    }
                }
            }
        }
    }
}
