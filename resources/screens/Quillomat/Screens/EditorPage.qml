// The editor: the live preview in a soft well, and a bar of tools at the bottom.
import QtQuick
import QtQuick.Window
import Quillomat.Controls
import Quillomat.Host
import Quillomat.Theme

ScreenPage {
    id: root

    // A low window has room beside the picture rather than below it.
    readonly property bool sideways: width > height && height < Theme.lowWindow

    Item {
        id: stage
        width: parent.width - (root.sideways ? tools.width + Theme.step : 0)
        height: parent.height - (root.sideways ? 0 : tools.height + Theme.step)

        Well {
            id: well
            anchors.fill: parent
            anchors.leftMargin: Theme.gap
            anchors.rightMargin: root.sideways ? Theme.step : Theme.gap
            anchors.bottomMargin: root.sideways ? Theme.gap : 2 * Theme.step
        }
        Item {
            id: frame
            readonly property rect viewport: root.screen.viewport
            readonly property real room: 2 * Theme.gap + (root.screen.isMeasuring ? 0 : Theme.margin)
            readonly property real zoom: Math.max(0.1, Math.min((well.width - room) / viewport.width,
                                                                (well.height - room) / viewport.height))
            // On whole device pixels, or the picture would be drawn a second time between them. The hardware's scene
            // is stretched over the window's pixels, whose number is whole where points times ratio is not.
            readonly property real ratio: Screen.devicePixelRatio
            readonly property bool isStretched: GraphicsInfo.api !== GraphicsInfo.Software
            readonly property real ratioX: isStretched ? Math.round(Window.width * ratio) / Window.width : ratio
            readonly property real ratioY: isStretched ? Math.round(Window.height * ratio) / Window.height : ratio
            readonly property real above: root.bar.height
            function snapX(length: real): real { return Math.round(length * ratioX) / ratioX; }
            function snapY(length: real): real { return Math.round(length * ratioY) / ratioY; }

            x: snapX(well.x + (well.width - width) / 2)
            y: snapY(above + well.y + (well.height - height) / 2) - above
            width: snapX(viewport.width * zoom)
            height: snapY(viewport.height * zoom)

            Checkerboard {
                readonly property rect place: root.screen.canvas
                x: frame.snapX((place.x - frame.viewport.x) * frame.zoom)
                y: frame.snapY((place.y - frame.viewport.y) * frame.zoom)
                width: frame.snapX(place.width * frame.zoom)
                height: frame.snapY(place.height * frame.zoom)
            }
            PreviewItem {
                id: preview
                objectName: "preview"
                anchors.fill: parent
                screen: root.screen
                opacity: isDrawn ? 1 : 0
                Behavior on opacity { NumberAnimation { duration: Theme.fade } }
                Accessible.role: Accessible.Graphic
                Accessible.ignored: !enabled
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

    Grid {
        id: tools
        readonly property real cell: root.sideways ? Theme.toolWidth
                                                   : Math.min(root.width - 2 * Theme.step, Theme.columnWidth) / 5
        readonly property real cellHeight: Math.min(Theme.toolHeight, stage.height / rowsBeside)
        // Large labels need two columns.
        readonly property int rowsBeside: !root.sideways ? 1 : stage.height >= 5 * (Theme.toolHeight - 2 * Theme.step) ? 5 : 3

        /// The arrow keys go from tool to tool, past those that the mockup does not take.
        function step(by: int): void {
            let now = 0;
            while (now < children.length && !children[now].activeFocus)
                ++now;
            for (now += by; now >= 0 && now < children.length; now += by)
                if (children[now].enabled) {
                    children[now].forceActiveFocus(Qt.TabFocusReason);
                    return;
                }
        }

        columns: Math.ceil(5 / rowsBeside)
        x: root.sideways ? stage.width : Math.round((parent.width - width) / 2)
        y: root.sideways ? Math.round((stage.height - height) / 2) : stage.height
        Accessible.role: Accessible.ToolBar
        Accessible.ignored: !enabled
        Accessible.name: qsTr("Tools")
        Keys.onLeftPressed: step(-1)
        Keys.onRightPressed: step(1)
        Keys.onUpPressed: step(-1)
        Keys.onDownPressed: step(1)

        ToolButton {
            width: tools.cell
            height: tools.cellHeight
            name: qsTr("Left screenshot")
            label: qsTr("Left")
            icon: "left"
            focus: true
            available: root.screen.leftEnabled
            onTriggered: root.screen.press(EditorScreen.Left)
        }
        ToolButton {
            width: tools.cell
            height: tools.cellHeight
            name: qsTr("Right screenshot")
            label: qsTr("Right")
            icon: "right"
            available: root.screen.rightEnabled
            onTriggered: root.screen.press(EditorScreen.Right)
        }
        ToolButton {
            width: tools.cell
            height: tools.cellHeight
            name: qsTr("Background")
            icon: "background"
            available: root.screen.backgroundEnabled
            onTriggered: root.screen.press(EditorScreen.Background)
        }
        ToolButton {
            width: tools.cell
            height: tools.cellHeight
            name: qsTr("Glare")
            icon: "glare"
            toggles: true
            on: root.screen.showsGlare
            available: root.screen.glareEnabled
            onTriggered: root.screen.press(EditorScreen.Glare)
        }
        ToolButton {
            width: tools.cell
            height: tools.cellHeight
            name: qsTr("Save")
            icon: "save"
            prominent: true
            available: root.screen.saveEnabled
            onTriggered: root.screen.press(EditorScreen.Save)
        }
    }
}
