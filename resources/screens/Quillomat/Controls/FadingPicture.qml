// A picture from the core or a file, decoded at display size elsewhere; it fades in and never shifts anything.
import QtQuick
import Quillomat.Theme

Image {
    id: root

    readonly property real ratio: Screen.devicePixelRatio

    asynchronous: true
    cache: false
    fillMode: Image.PreserveAspectFit
    smooth: true
    mipmap: false
    sourceSize: Qt.size(Math.max(1, Math.round(width * ratio)), Math.max(1, Math.round(height * ratio)))
    opacity: status === Image.Ready ? 1 : 0
    Accessible.ignored: true
    Behavior on opacity { NumberAnimation { duration: Theme.fade } }
}
