// What all screens share: the bar, the ground, and the box that the core may lay over them.
import QtQuick
import QtQuick.Controls.Basic as Basic
import Quillomat.Controls
import Quillomat.Host
import Quillomat.Theme

FocusScope {
    id: root

    required property QtObject screen
    property alias bar: bar
    property color ground: Theme.ground
    default property alias content: body.data

    // A screen that is on its way out takes no key: the focus would leave with it.
    enabled: Basic.StackView.status !== Basic.StackView.Deactivating
    Basic.StackView.onRemoved: Shell.release(screen)

    Rectangle {
        anchors.fill: parent
        color: root.ground
    }
    NavigationBar {
        id: bar
        width: parent.width
        screen: root.screen
        canGoBack: root.Basic.StackView.index > 0
        onBackPressed: Shell.back()
    }
    Item {
        id: body
        anchors.top: bar.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
    }
    Rectangle {
        id: notice
        visible: root.screen.notice !== ""
        anchors.centerIn: parent
        width: Math.min(parent.width - 2 * Theme.margin, words.implicitWidth + 3 * Theme.margin)
        height: Math.max(Theme.target, words.implicitHeight + 4 * Theme.step)
        radius: height / 2
        color: Theme.raised
        Accessible.role: Accessible.ProgressBar
        Accessible.name: root.screen.notice
        Lift { radius: notice.radius }
        Caption {
            id: words
            anchors.centerIn: parent
            width: Math.min(implicitWidth, parent.width - 2 * Theme.margin)
            text: root.screen.notice
            lineHeight: 1
        }
    }
}
