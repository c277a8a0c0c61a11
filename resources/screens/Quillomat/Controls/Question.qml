// What alerts and sheets share: they keep the keyboard to themselves, and the arrow keys go from answer to answer.
import QtQuick

FocusScope {
    id: root

    property bool sideKeys: true

    function step(forward: bool): void {
        const now = root.Window.activeFocusItem;
        const next = now ? now.nextItemInFocusChain(forward) : null;
        if (next)
            next.forceActiveFocus(forward ? Qt.TabFocusReason : Qt.BacktabFocusReason);
    }

    anchors.fill: parent
    focus: true
    Keys.onUpPressed: step(false)
    Keys.onDownPressed: step(true)
    Keys.onLeftPressed: event => { if (sideKeys) step(false); else event.accepted = false; }
    Keys.onRightPressed: event => { if (sideKeys) step(true); else event.accepted = false; }
}
