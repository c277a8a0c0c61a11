// The bar above a screen: back or the left button, the title, the right button.
import QtQuick
import Quillomat.Theme

Item {
    id: root

    property QtObject screen: null
    property bool canGoBack: false

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
        anchors.centerIn: parent
        width: Math.min(implicitWidth, parent.width - 2 * Math.max(leftButton.visible ? leftButton.width : Theme.target,
                                                                   rightButton.width) - 4 * Theme.margin)
        text: root.screen ? root.screen.title : ""
        size: Theme.sizeTitle
        strong: true
        lineHeight: 1
        horizontalAlignment: Text.AlignHCenter
        Accessible.ignored: false
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
    BarButton {
        id: rightButton
        name: root.screen ? root.screen.rightTitle : ""
        fontSize: root.screen ? root.screen.barFontSize : 12
        anchors.right: parent.right
        anchors.rightMargin: Theme.margin
        anchors.verticalCenter: parent.verticalCenter
        onTriggered: root.screen.pressRight()
    }
}
