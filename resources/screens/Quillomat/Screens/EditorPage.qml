// The editor: the live preview in a soft well, and a bar of tools at the bottom.
import QtQuick
import Quillomat.Controls
import Quillomat.Host
import Quillomat.Theme

ScreenPage {
    id: root

    Item {
        id: stage
        anchors.top: parent.top
        anchors.bottom: tools.top
        width: parent.width

        Rectangle {
            id: well
            anchors.fill: parent
            anchors.leftMargin: Theme.gap
            anchors.rightMargin: Theme.gap
            anchors.bottomMargin: Theme.gap
            radius: Theme.cardRadius
            gradient: Gradient {
                GradientStop { position: 0; color: Theme.wellTop }
                GradientStop { position: 1; color: Theme.wellBottom }
            }
        }
        Item {
            id: frame
            readonly property rect viewport: root.screen.viewport
            readonly property real room: 2 * Theme.gap + (root.screen.isMeasuring ? 0 : Theme.margin)
            readonly property real zoom: Math.max(0.1, Math.min((well.width - room) / viewport.width,
                                                                (well.height - room) / viewport.height))

            anchors.centerIn: well
            width: Math.round(viewport.width * zoom)
            height: Math.round(viewport.height * zoom)

            Checkerboard {
                readonly property rect place: root.screen.canvas
                x: (place.x - frame.viewport.x) * frame.zoom
                y: (place.y - frame.viewport.y) * frame.zoom
                width: place.width * frame.zoom
                height: place.height * frame.zoom
            }
            PreviewItem {
                id: preview
                objectName: "preview"
                anchors.fill: parent
                screen: root.screen
                opacity: isDrawn ? 1 : 0
                Behavior on opacity { NumberAnimation { duration: Theme.fade } }
                Accessible.role: Accessible.Graphic
                Accessible.name: qsTr("Preview")
            }
            Loader {
                anchors.fill: parent
                active: root.screen.isMeasuring
                sourceComponent: Component {
                    MeasuringPreview {
                        screen: root.screen
                        zoom: frame.zoom
                    }
                }
            }
        }
    }

    Row {
        id: tools
        readonly property real cell: Math.min((root.width - 2 * Theme.step) / 5, Theme.columnWidth / 5)

        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.step
        anchors.horizontalCenter: parent.horizontalCenter
        height: Theme.toolBarHeight
        Accessible.role: Accessible.ToolBar
        Accessible.name: qsTr("Tools")

        ToolButton {
            width: tools.cell
            name: qsTr("Left screenshot")
            label: qsTr("Left")
            icon: "left"
            focus: true
            available: root.screen.leftEnabled
            onTriggered: root.screen.press(EditorScreen.Left)
        }
        ToolButton {
            width: tools.cell
            name: qsTr("Right screenshot")
            label: qsTr("Right")
            icon: "right"
            available: root.screen.rightEnabled
            onTriggered: root.screen.press(EditorScreen.Right)
        }
        ToolButton {
            width: tools.cell
            name: qsTr("Background")
            icon: "background"
            available: root.screen.backgroundEnabled
            onTriggered: root.screen.press(EditorScreen.Background)
        }
        ToolButton {
            width: tools.cell
            name: qsTr("Glare")
            icon: "glare"
            on: root.screen.showsGlare
            available: root.screen.glareEnabled
            onTriggered: root.screen.press(EditorScreen.Glare)
        }
        ToolButton {
            width: tools.cell
            name: qsTr("Save")
            icon: "save"
            prominent: true
            available: root.screen.saveEnabled
            onTriggered: root.screen.press(EditorScreen.Save)
        }
    }
}
