// What all buttons are: a press by finger, mouse, key or screen reader, a name, a ring when focused.
import QtQuick
import Quillomat.Host
import Quillomat.Theme

Item {
    id: root

    required property string name
    property string hint: ""
    property bool available: true
    property bool sinks: true
    property bool scrolls: false // stands in something that a finger moves
    property alias ringRadius: ring.radius
    property real ringX: 1 // how far inside it stands
    property real ringY: 1
    readonly property bool pressed: tap.pressed
    readonly property bool hovered: hover.hovered
    default property alias content: surface.data

    signal triggered()

    function trigger(): void {
        if (root.enabled)
            root.triggered();
    }

    enabled: available
    implicitWidth: Theme.target
    implicitHeight: Theme.target
    activeFocusOnTab: enabled && !scrolls
    objectName: name

    Accessible.role: Accessible.Button
    Accessible.ignored: parent !== null && !parent.enabled // something stands before it
    Accessible.name: name
    // The toolkit's bridge does not say what is disabled.
    Accessible.description: available ? hint : qsTr("Not available")
    Accessible.focusable: true
    Accessible.onPressAction: root.trigger()

    Keys.onReturnPressed: event => { if (!event.isAutoRepeat) root.trigger(); }
    Keys.onEnterPressed: event => { if (!event.isAutoRepeat) root.trigger(); }
    Keys.onSpacePressed: event => { if (!event.isAutoRepeat) root.trigger(); }

    TapHandler {
        id: tap
        gesturePolicy: root.scrolls ? TapHandler.DragThreshold : TapHandler.ReleaseWithinBounds
        onTapped: root.trigger()
    }
    HoverHandler {
        id: hover
        acceptedDevices: PointerDevice.AllDevices & ~PointerDevice.TouchScreen
        cursorShape: root.enabled ? Qt.PointingHandCursor : Qt.ArrowCursor
    }
    Item {
        id: surface
        anchors.fill: parent
        opacity: root.available ? 1 : Theme.disabledOpacity
        scale: root.sinks && root.pressed ? Theme.pressedScale : 1
        Behavior on scale { NumberAnimation { duration: Theme.fade; easing.type: Theme.easing } }
        Behavior on opacity { NumberAnimation { duration: Theme.fade } }
    }
    FocusRing {
        id: ring
        anchors.fill: parent
        anchors.leftMargin: root.ringX
        anchors.rightMargin: root.ringX
        anchors.topMargin: root.ringY
        anchors.bottomMargin: root.ringY
        visible: root.activeFocus && Shell.usesKeyboard
    }
}
