// Line icons on a 24-point square, drawn in one colour.
import QtQuick
import QtQuick.Shapes
import Quillomat.Theme

Item {
    id: root

    property string name: ""
    property color color: Theme.text
    property real size: Theme.iconSize
    property real stroke: Theme.iconStroke

    readonly property var paths: ({
        "back": "M15 5 L8 12 L15 19",
        "chevron": "M9.5 6 L15.5 12 L9.5 18",
        "left": "M5.5 2.75 H12.5 A2.25 2.25 0 0 1 14.75 5 V19 A2.25 2.25 0 0 1 12.5 21.25 H5.5 A2.25 2.25 0 0 1 3.25 19 V5 A2.25 2.25 0 0 1 5.5 2.75 Z M7.5 5.5 H10.5 M18 6 H19 A2 2 0 0 1 21 8 V16 A2 2 0 0 1 19 18 H18",
        "right": "M11.5 2.75 H18.5 A2.25 2.25 0 0 1 20.75 5 V19 A2.25 2.25 0 0 1 18.5 21.25 H11.5 A2.25 2.25 0 0 1 9.25 19 V5 A2.25 2.25 0 0 1 11.5 2.75 Z M13.5 5.5 H16.5 M6 6 H5 A2 2 0 0 0 3 8 V16 A2 2 0 0 0 5 18 H6",
        "background": "M5.5 4 H18.5 A2.5 2.5 0 0 1 21 6.5 V17.5 A2.5 2.5 0 0 1 18.5 20 H5.5 A2.5 2.5 0 0 1 3 17.5 V6.5 A2.5 2.5 0 0 1 5.5 4 Z M3.3 16.5 L8.5 11.5 L13 16 L16 13.2 L20.8 17.6 M15.2 8.8 A1.3 1.3 0 1 0 17.8 8.8 A1.3 1.3 0 1 0 15.2 8.8",
        "glare": "M7 2.75 H17 A2.25 2.25 0 0 1 19.25 5 V19 A2.25 2.25 0 0 1 17 21.25 H7 A2.25 2.25 0 0 1 4.75 19 V5 A2.25 2.25 0 0 1 7 2.75 Z M8 13.5 L15.5 6 M8.5 18 L16 10.5",
        "save": "M12 3.5 V14.5 M7.5 10.5 L12 15 L16.5 10.5 M4 15.5 V18 A2.5 2.5 0 0 0 6.5 20.5 H17.5 A2.5 2.5 0 0 0 20 18 V15.5",
        "folder": "M3 7.5 V17.5 A2 2 0 0 0 5 19.5 H19 A2 2 0 0 0 21 17.5 V9.5 A2 2 0 0 0 19 7.5 H12 L9.8 5 H5 A2 2 0 0 0 3 7 Z",
        "document": "M6.5 3 H13.5 L18.5 8 V19 A2 2 0 0 1 16.5 21 H7 A2 2 0 0 1 5 19 V4.5 A1.5 1.5 0 0 1 6.5 3 Z M13.5 3.2 V8 H18.3",
        "up": "M12 19 V6 M6.5 11 L12 5.5 L17.5 11"
    })

    implicitWidth: size
    implicitHeight: size

    Shape {
        width: 24
        height: 24
        anchors.centerIn: parent
        scale: root.size / 24
        antialiasing: true
        layer.enabled: GraphicsInfo.api !== GraphicsInfo.Software
        layer.samples: 4
        layer.smooth: true
        layer.textureSize: Qt.size(96, 96)
        ShapePath {
            strokeColor: root.color
            strokeWidth: root.stroke * 24 / root.size
            fillColor: Theme.clear
            capStyle: ShapePath.RoundCap
            joinStyle: ShapePath.RoundJoin
            PathSvg { path: root.paths[root.name] ?? "" }
        }
    }
}
