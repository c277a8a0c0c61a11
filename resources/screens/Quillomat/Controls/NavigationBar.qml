// The bar above a screen: back or the left button, the title, the right button.
import QtQuick
import Quillomat.Theme

Item {
    id: root

    property QtObject screen: null
    property bool canGoBack: false

    // Where the buttons end and the title may begin.
    readonly property real leftEnd: leftButton.visible ? leftButton.x + leftButton.width
                                                       : back.visible ? back.x + back.width : 0
    readonly property real rightEnd: rightButton.visible ? rightButton.x : width

    signal backPressed()

    implicitHeight: Theme.barHeight

    Pressable {
        id: back
        name: qsTr("Back")
        visible: root.canGoBack
        available: visible
        anchors.left: parent.left
        anchors.leftMargin: Theme.step
        anchors.verticalCenter: parent.verticalCenter
        onTriggered: root.backPressed()
        Icon {
            anchors.centerIn: parent
            name: "back"
            color: Theme.accent
            stroke: 2
        }
    }
    BarButton {
        id: leftButton
        name: root.screen ? root.screen.leftTitle : ""
        fontSize: root.screen ? root.screen.barFontSize : 12
        anchors.left: back.visible ? back.right : parent.left
        anchors.leftMargin: back.visible ? 0 : Theme.margin
        anchors.verticalCenter: parent.verticalCenter
        onTriggered: root.screen.pressLeft()
    }
    Caption {
        // In the middle of the window, or as near to it as the buttons let it.
        width: Math.max(0, Math.min(Math.ceil(implicitWidth), root.rightEnd - root.leftEnd - 2 * Theme.gap))
        visible: width > 2 * size
        x: Math.round(Math.max(root.leftEnd + Theme.gap,
                               Math.min((root.width - width) / 2, root.rightEnd - Theme.gap - width)))
        anchors.verticalCenter: parent.verticalCenter
        text: root.screen ? root.screen.title : ""
        size: Theme.sizeTitle
        strong: true
        lineHeight: 1
        horizontalAlignment: Text.AlignHCenter
        Accessible.ignored: text === "" || !root.enabled
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
    BarButton {
        id: rightButton
        name: root.screen ? root.screen.rightTitle : ""
        fontSize: root.screen ? root.screen.barFontSize : 12
        width: Math.min(implicitWidth, root.width - root.leftEnd - Theme.gap - Theme.margin)
        anchors.right: parent.right
        anchors.rightMargin: Theme.margin
        anchors.verticalCenter: parent.verticalCenter
        onTriggered: root.screen.pressRight()
    }
}
