// The window: the stack of screens, and above it what is presented.
import QtQuick
import QtQuick.Controls.Basic as Basic
import QtQuick.Window
import Quillomat.Controls
import Quillomat.Host
import Quillomat.Theme

Window {
    id: root

    width: 400
    height: 800
    minimumWidth: 320
    minimumHeight: 320
    visible: true
    color: Theme.ground
    title: "Quillomat"

    // While the core waits for the web it cannot be closed; the wish is kept.
    property bool closesLater: false
    onClosing: close => {
        if (Shell.isWaiting) {
            close.accepted = false;
            closesLater = true;
        }
    }

    Connections {
        target: Shell
        function onIsWaitingChanged(): void {
            if (root.closesLater && !Shell.isWaiting)
                Qt.callLater(root.close);
        }
        function onPushed(screen: QtObject): void {
            swipe.end();
            const page = screen.kind === "list" ? listPage : screen.kind === "gallery" ? galleryPage : editorPage;
            stack.push(page, { "screen": screen }, stack.depth === 0 ? Basic.StackView.Immediate
                                                                     : Basic.StackView.PushTransition);
            stack.currentItem.forceActiveFocus();
        }
        function onPoppedTo(depth: int): void {
            const isGone = swipe.end();
            if (depth < stack.depth)
                stack.pop(stack.get(depth - 1), isGone ? Basic.StackView.Immediate : Basic.StackView.PopTransition);
            stack.currentItem.forceActiveFocus();
        }
    }

    Component { id: listPage; ListPage {} }
    Component { id: galleryPage; GalleryPage {} }
    Component { id: editorPage; EditorPage {} }

    Basic.StackView {
        id: stack
        anchors.fill: parent
        enabled: !Shell.presentation
        focus: !Shell.presentation
        Accessible.ignored: !enabled

        pushEnter: Transition {
            NumberAnimation {
                property: Theme.reducesMotion ? "opacity" : "x"
                from: Theme.reducesMotion ? 0 : stack.width
                to: Theme.reducesMotion ? 1 : 0
                duration: Theme.duration
                easing.type: Theme.easing
            }
        }
        pushExit: Transition {
            NumberAnimation {
                property: Theme.reducesMotion ? "opacity" : "x"
                from: Theme.reducesMotion ? 1 : 0
                to: Theme.reducesMotion ? 0 : -stack.width / 3
                duration: Theme.duration
                easing.type: Theme.easing
            }
        }
        popEnter: Transition {
            NumberAnimation {
                property: Theme.reducesMotion ? "opacity" : "x"
                from: Theme.reducesMotion ? 0 : -stack.width / 3
                to: Theme.reducesMotion ? 1 : 0
                duration: Theme.duration
                easing.type: Theme.easing
            }
        }
        popExit: Transition {
            NumberAnimation {
                property: Theme.reducesMotion ? "opacity" : "x"
                from: Theme.reducesMotion ? 1 : 0
                to: Theme.reducesMotion ? 0 : stack.width
                duration: Theme.duration
                easing.type: Theme.easing
            }
        }

        Keys.onEscapePressed: Shell.back()
        Keys.onBackPressed: event => {
            event.accepted = Shell.depth > 1;
            Shell.back();
        }
    }

    BackSwipe {
        id: swipe
        anchors.fill: parent
        stack: stack
        allowed: !Shell.presentation
    }

    Shortcut {
        sequences: [StandardKey.Back]
        enabled: !Shell.presentation
        onActivated: Shell.back()
    }
    Shortcut {
        sequences: [StandardKey.Quit]
        onActivated: root.close()
    }

    Presenter {
        anchors.fill: parent
        onGone: stack.currentItem?.forceActiveFocus()
    }
}
